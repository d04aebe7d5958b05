#include "KZURLHandler.h"

#include "KZStringAdditions.h"

#include <QUrl>

namespace {

// What follows "scheme:", as written.
QString resourceSpecifier(const QString &url)
{
    const qsizetype colon = url.indexOf(u':');
    return colon < 0 ? QString() : url.sliced(colon + 1);
}

QString schemeOf(const QString &url)
{
    const qsizetype colon = url.indexOf(u':');
    return colon < 0 ? QString() : url.first(colon).toLower();
}

} // namespace

std::optional<KZURLRequest> KZURLHandler::parseURL(const QString &url)
{
    const QString specifier = resourceSpecifier(url);
    if (!specifier.startsWith(QLatin1StringView("//")))
        return std::nullopt;
    const qsizetype question = specifier.indexOf(u'?');
    if (question < 0)
        return KZURLRequest{specifier.sliced(2), {}};
    const QString query = QUrl::fromPercentEncoding(specifier.sliced(question + 1).toUtf8());
    return KZURLRequest{specifier.sliced(2, question - 2), kz_parseQueryString(query)};
}

bool KZURLHandler::handleURL(const QString &url) const
{
    if (!_delegate)
        return false;
    if (schemeOf(url) != _scheme.toLower())
        return _delegate->urlHandlerReceivedURLWithUnknownScheme(url);
    const std::optional<KZURLRequest> request = parseURL(url);
    if (!request)
        return _delegate->urlHandlerReceivedURLWithVerb(std::nullopt, {});
    if (request->verb == QLatin1StringView("reg"))
        return _delegate->urlHandlerReceivedRegistrationURLWithArgs(request->arguments);
    if (request->verb == QLatin1StringView("update"))
        return _delegate->urlHandlerReceivedUpdateURL();
    if (request->verb == QLatin1StringView("help")) {
        const auto anchor = request->arguments.constFind(QStringLiteral("anchor"));
        return _delegate->urlHandlerReceivedHelpURLWithAnchor(
            anchor == request->arguments.cend() ? std::nullopt : std::optional(*anchor));
    }
    return _delegate->urlHandlerReceivedURLWithVerb(request->verb, request->arguments);
}
