#pragma once

#include <QHash>
#include <QString>

#include <optional>

/// What a URL of the program's scheme asks for: the verb after "//" and the
/// arguments of its query.
struct KZURLRequest
{
    QString verb;
    QHash<QString, QString> arguments;
};

/// Who acts on the program's URLs. Every call may be left as it is: the
/// answer then is false, "not handled".
class KZURLHandlerDelegate
{
public:
    virtual ~KZURLHandlerDelegate() = default;

    virtual bool urlHandlerReceivedRegistrationURLWithArgs(const QHash<QString, QString> &)
    {
        return false;
    }
    virtual bool urlHandlerReceivedUpdateURL() { return false; }
    /// "help": with an anchor, shows that place of the help; without, the help.
    virtual bool urlHandlerReceivedHelpURLWithAnchor(const std::optional<QString> &)
    {
        return false;
    }
    /// An unknown verb, or no verb at all (a URL without "//").
    virtual bool urlHandlerReceivedURLWithVerb(const std::optional<QString> &,
                                               const QHash<QString, QString> &)
    {
        return false;
    }
    virtual bool urlHandlerReceivedURLWithUnknownScheme(const QString &) { return false; }
};

/// Turns URLs of one scheme ("arbordeck:") into calls on its delegate. The
/// delegate is not owned and outlives the handler.
class KZURLHandler
{
public:
    explicit KZURLHandler(QString scheme) : _scheme(std::move(scheme)) {}

    const QString &scheme() const { return _scheme; }
    void setDelegate(KZURLHandlerDelegate *delegate) { _delegate = delegate; }

    /// The verb and arguments of a URL whose part after the scheme starts
    /// with "//"; nothing for any other. The query is percent-decoded as a
    /// whole before it is split, so an encoded "&" or "=" splits too.
    static std::optional<KZURLRequest> parseURL(const QString &url);

    /// Hands `url` to the delegate; true when it was acted on.
    bool handleURL(const QString &url) const;

private:
    QString _scheme;
    KZURLHandlerDelegate *_delegate = nullptr;
};
