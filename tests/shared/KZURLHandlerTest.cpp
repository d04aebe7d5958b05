#include "shared/KZURLHandler.h"

#include <gtest/gtest.h>

namespace {

// Writes down each call as one line, so a row can say which call a URL made.
class RecordingDelegate : public KZURLHandlerDelegate
{
public:
    QString heard;

    bool urlHandlerReceivedRegistrationURLWithArgs(const QHash<QString, QString> &args) override
    {
        return note(QStringLiteral("reg ") + argumentText(args));
    }
    bool urlHandlerReceivedUpdateURL() override { return note(QStringLiteral("update")); }
    bool urlHandlerReceivedHelpURLWithAnchor(const std::optional<QString> &anchor) override
    {
        return note(QStringLiteral("help ") + anchor.value_or(QStringLiteral("(book)")));
    }
    bool urlHandlerReceivedURLWithVerb(const std::optional<QString> &verb,
                                       const QHash<QString, QString> &args) override
    {
        return note(QStringLiteral("verb ") + verb.value_or(QStringLiteral("(none)")) + u' ' +
                    argumentText(args));
    }
    bool urlHandlerReceivedURLWithUnknownScheme(const QString &url) override
    {
        return note(QStringLiteral("unknown ") + url);
    }

private:
    bool note(const QString &line)
    {
        heard = line.trimmed();
        return true;
    }
    static QString argumentText(const QHash<QString, QString> &args)
    {
        QStringList pairs;
        for (auto it = args.cbegin(); it != args.cend(); ++it)
            pairs << it.key() + u'=' + it.value();
        pairs.sort();
        return pairs.join(u',');
    }
};

struct UrlRow
{
    const char *name;
    const char *url;
    const char *heard;
};

class UrlHandling : public testing::TestWithParam<UrlRow>
{};

TEST_P(UrlHandling, CallsTheDelegateForTheVerb)
{
    RecordingDelegate delegate;
    KZURLHandler handler(QStringLiteral("arbordeck"));
    handler.setDelegate(&delegate);
    EXPECT_TRUE(handler.handleURL(QString::fromUtf8(GetParam().url)));
    EXPECT_EQ(delegate.heard, QString::fromUtf8(GetParam().heard));
}

INSTANTIATE_TEST_SUITE_P(
    KZURLHandler, UrlHandling,
    testing::Values(UrlRow{"HelpAnchor", "arbordeck://help?anchor=intro", "help intro"},
                    UrlRow{"HelpBook", "arbordeck://help", "help (book)"},
                    UrlRow{"Update", "arbordeck://update", "update"},
                    UrlRow{"SchemeCase", "ArborDeck://update", "update"},
                    UrlRow{"NoSlashesNoVerb", "arbordeck:foo", "verb (none)"},
                    UrlRow{"OtherScheme", "file:///tmp/a.plist", "unknown file:///tmp/a.plist"},
                    // The query is decoded as a whole first, so encoded separators split.
                    UrlRow{"EncodedSeparatorsSplit", "arbordeck://reg?name=A%26B%3Dc",
                           "reg B=c,name=A"},
                    UrlRow{"PieceWithoutEqualsDropped", "arbordeck://open?x&y=1", "verb open y=1"},
                    UrlRow{"ValueKeepsLaterEquals", "arbordeck://open?k=a=b", "verb open k=a=b"}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(KZURLHandler, AnswersNotHandledWithoutADelegateOrAnAnswer)
{
    KZURLHandler handler(QStringLiteral("arbordeck"));
    EXPECT_FALSE(handler.handleURL(QStringLiteral("arbordeck://help")));
    KZURLHandlerDelegate silent;
    handler.setDelegate(&silent);
    EXPECT_FALSE(handler.handleURL(QStringLiteral("arbordeck://help")));
}

} // namespace
