#include "shared/KZDataAdditions.h"
#include "shared/KZError.h"
#include "shared/KZLocalizedString.h"

#include <gtest/gtest.h>

namespace {

TEST(DataAdditions, HexRoundTripsAndRefusesBadText)
{
    const QByteArray bytes("\x00\x7f\xff\x10", 4);
    EXPECT_EQ(hexString(bytes), QStringLiteral("007fff10"));
    EXPECT_EQ(hexStringWithBytes(bytes, 2, true), QStringLiteral("0x007f ff10"));
    EXPECT_EQ(hexStringData(u"007FfF10"), bytes);
    EXPECT_EQ(hexStringData(u""), QByteArray());
    EXPECT_FALSE(hexStringData(u"abc"));
    EXPECT_FALSE(hexStringData(u"zz"));
    EXPECT_FALSE(hexStringData(u"00 7f"));
    EXPECT_EQ(hexStringDataWithPadding(u" 0x007f ff10\n", true), bytes);
}

TEST(DataAdditions, DecodesBase64AndUtf8)
{
    EXPECT_EQ(dataFromBase64String(u"SGVs\n\tbG8="), QByteArray("Hello"));
    EXPECT_FALSE(dataFromBase64String(u"SGVs*bG8="));
    EXPECT_EQ(stringValue(QByteArray("caf\xc3\xa9")), QStringLiteral("caf\u00e9"));
    EXPECT_FALSE(stringValue(QByteArray("\xff\xfe")));
}

TEST(LocalizedString, UsesTheTableThenTheDefault)
{
    EXPECT_EQ(KZLocalizedStringWithID(104, QStringLiteral("unused default")),
              QStringLiteral("ASCII"));
    EXPECT_EQ(KZLocalizedStringWithID(99999, QStringLiteral("fallback")),
              QStringLiteral("fallback"));
    const QString format = KZLocalizedStringWithID(109, QString());
    EXPECT_EQ(
        KZStringWithFormat(format, {"/tmp/x", "bad xml", "bad json"}),
        QStringLiteral("The file /tmp/x could not be opened because an error occurred parsing the "
                       "file.\n\nPlist parse error: bad xml\n\nJSON parse error: bad json"));
    EXPECT_EQ(KZStringWithFormat("%lu bytes: %d%% of %@", {"3", "50", "x"}),
              QStringLiteral("3 bytes: 50% of x"));
}

TEST(Error, RunsRecoveryHandlers)
{
    KZError error(ADErrorDomain, 8001, QStringLiteral("Key already exists"));
    int replaced = 0;
    error.addRecoveryOption(QStringLiteral("Replace"), [&replaced]() -> std::optional<KZError> {
        ++replaced;
        return std::nullopt;
    });
    error.addRecoveryOption(QStringLiteral("Cancel"), [] {
        return std::optional<KZError>(KZError(QStringLiteral("NSCocoaErrorDomain"), 3072));
    });
    const KZError copy = error;
    EXPECT_EQ(copy.localizedRecoveryOptions(), (QStringList{"Replace", "Cancel"}));
    EXPECT_FALSE(copy.attemptRecovery(0));
    EXPECT_EQ(replaced, 1);
    const auto cancelled = copy.attemptRecovery(1);
    ASSERT_TRUE(cancelled);
    EXPECT_TRUE(cancelled->is(QStringLiteral("NSCocoaErrorDomain"), 3072));
}

} // namespace
