#include "storage/UnicodeText.h"

#include <QString>

#include <gtest/gtest.h>

#include <string>

namespace {

using Flaw = UnicodeText::Flaw;
using Form = UnicodeText::Form;
using Nul = UnicodeText::Nul;

struct Utf8Row
{
    const char *name;
    QByteArray text;
    qsizetype allowingNul; // firstFlaw with NUL allowed
    qsizetype refusingNul;
};

const Utf8Row kUtf8[] = {
    {"Ascii", "plain text that runs past sixteen bytes", -1, -1},
    {"EveryLength", "\x7F\xC2\x80\xE0\xA0\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", -1, -1},
    {"NulAfterALongRun", QByteArray("sixteen bytes and more\0", 23), -1, 22},
    {"OverlongTwoBytes", "ab\xC1\xBF", 2, 2},
    {"OverlongThreeBytes", "\xE0\x9F\xBF", 0, 0},
    {"Surrogate", "x\xED\xA0\x80", 1, 1},
    {"AboveTheLastCodePoint", "\xF4\x90\x80\x80", 0, 0},
    {"LoneContinuation", "a\x80", 1, 1},
    {"CutShort", "0123456789abcdef\xE2\x82", 16, 16},
    {"BadThirdByte", "\xE2\x82(", 0, 0},
};

class UnicodeTextUtf8 : public testing::TestWithParam<Utf8Row>
{};

TEST_P(UnicodeTextUtf8, FindsTheFirstFlaw)
{
    const Utf8Row &row = GetParam();
    EXPECT_EQ(UnicodeText::firstFlaw(row.text, Nul::Allowed), row.allowingNul);
    EXPECT_EQ(UnicodeText::firstFlaw(row.text, Nul::Refused), row.refusingNul);
}

INSTANTIATE_TEST_SUITE_P(Rows, UnicodeTextUtf8, testing::ValuesIn(kUtf8),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(UnicodeText, EncodesAndDecodesEveryLengthAtItsBounds)
{
    for (const char32_t c : {0x00, 0x7F, 0x80, 0x7FF, 0x800, 0xFFFF, 0x10000, 0x10FFFF}) {
        char bytes[UnicodeText::kMaxUtf8Length];
        const char *end = UnicodeText::encode(c, bytes);
        EXPECT_EQ(QString::fromUtf8(bytes, end - bytes), QString::fromUcs4(&c, 1)) << quint32(c);
        if (c >= 0x80) {
            EXPECT_EQ(UnicodeText::sequenceLength(bytes, end), end - bytes) << quint32(c);
        }
        const char *p = bytes;
        EXPECT_EQ(UnicodeText::decode(p), c);
        EXPECT_EQ(p, end);
        std::u16string units;
        UnicodeText::appendUtf16(units, bytes, end);
        const char16_t *unit = units.data();
        EXPECT_EQ(UnicodeText::next(unit, units.data() + units.size()), c);
        EXPECT_EQ(unit, units.data() + units.size());
    }
}

TEST(UnicodeText, GivesBackSurrogatesThatAreNoPair)
{
    const std::u16string units = u"\xDC00\xD800x\xD83D\xDE00\xD800";
    const char16_t *p = units.data();
    const char16_t *end = p + units.size();
    std::u32string found;
    while (p < end)
        found.push_back(UnicodeText::next(p, end));
    EXPECT_EQ(found, (std::u32string{0xDC00, 0xD800, U'x', 0x1F600, 0xD800}));
}

struct TranscodeRow
{
    const char *name;
    QByteArray units;
    Form form;
    Nul nul;
    QByteArray utf8; // up to the flaw
    Flaw flaw;
};

const TranscodeRow kTranscodes[] = {
    {"Utf16LE", QByteArray("a\0\xE9\0=\xD8\x00\xDE", 8), Form::Utf16LE, Nul::Refused,
     "a\xC3\xA9\xF0\x9F\x98\x80", Flaw::None},
    {"Utf16BE", QByteArray("\0a\x20\xAC", 4), Form::Utf16BE, Nul::Refused, "a\xE2\x82\xAC",
     Flaw::None},
    {"Utf32LE", QByteArray("\x00\xF6\x01\x00", 4), Form::Utf32LE, Nul::Refused, "\xF0\x9F\x98\x80",
     Flaw::None},
    {"NulAllowed", QByteArray("\0\0b\0", 4), Form::Utf16LE, Nul::Allowed, QByteArray("\0b", 2),
     Flaw::None},
    {"NulRefused", QByteArray("a\0\0\0b\0", 6), Form::Utf16LE, Nul::Refused, "a", Flaw::Nul},
    {"UnpairedHigh", QByteArray("\0a\xD8\x00\0b", 6), Form::Utf16BE, Nul::Refused, "a",
     Flaw::UnpairedHigh},
    {"HighAtTheEnd", QByteArray("\0a\xD8\x00", 4), Form::Utf16BE, Nul::Refused, "a",
     Flaw::UnpairedHigh},
    {"UnpairedLow", QByteArray("\xDC\x00", 2), Form::Utf16BE, Nul::Allowed, "", Flaw::UnpairedLow},
    {"Utf32Surrogate", QByteArray("\0\0\xD8\0", 4), Form::Utf32BE, Nul::Allowed, "",
     Flaw::NotACharacter},
    {"Utf32TooLarge", QByteArray("\0\0\0a\0\x11\0\0", 8), Form::Utf32BE, Nul::Allowed, "a",
     Flaw::NotACharacter},
    {"HalfAUnit", QByteArray("\0a\0", 3), Form::Utf16BE, Nul::Refused, "a", Flaw::PartialUnit},
    {"FlawBeforeTheHalfUnit", QByteArray("\xDC\x00\0", 3), Form::Utf16BE, Nul::Refused, "",
     Flaw::UnpairedLow},
};

class UnicodeTextTranscoding : public testing::TestWithParam<TranscodeRow>
{};

TEST_P(UnicodeTextTranscoding, ConvertsUpToTheFirstFlaw)
{
    const TranscodeRow &row = GetParam();
    const UnicodeText::Transcoded result = UnicodeText::toUtf8(row.units, row.form, row.nul);
    EXPECT_EQ(result.flaw, row.flaw);
    EXPECT_EQ(result.utf8, row.utf8);
}

INSTANTIATE_TEST_SUITE_P(Rows, UnicodeTextTranscoding, testing::ValuesIn(kTranscodes),
                         [](const auto &row) { return std::string(row.param.name); });

} // namespace
