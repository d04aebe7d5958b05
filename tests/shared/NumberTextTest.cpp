#include "shared/NumberText.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <limits>
#include <string>

namespace {

using Status = NumberText::Status;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr quint64 kMax = std::numeric_limits<quint64>::max();

struct IntegerRow
{
    const char *name;
    const char *text;
    int forms;
    Status status;
    bool negative = false;
    quint64 magnitude = 0;
};

const IntegerRow kIntegers[] = {
    {"Zero", "0", NumberText::Decimal, Status::Ok},
    {"LeadingZeros", "007", NumberText::Decimal, Status::Ok, false, 7},
    {"Plus", "+7", NumberText::Decimal, Status::Ok, false, 7},
    {"Minus", "-7", NumberText::Decimal, Status::Ok, true, 7},
    {"SignedMinimum", "-9223372036854775808", NumberText::Decimal, Status::Ok, true,
     NumberText::kMinSignedMagnitude},
    {"BelowSignedMinimum", "-9223372036854775809", NumberText::Decimal, Status::OutOfRange},
    {"UnsignedMaximum", "18446744073709551615", NumberText::Decimal, Status::Ok, false, kMax},
    {"AboveUnsignedMaximum", "18446744073709551616", NumberText::Decimal, Status::OutOfRange},
    {"FarAbove", "123456789012345678901234567890", NumberText::Decimal, Status::OutOfRange},
    {"HexWithoutTheForm", "0x1A", NumberText::Decimal, Status::Malformed},
    {"Hex", "0x1A", NumberText::Hexadecimal, Status::Ok, false, 26},
    {"NegativeHexUpperX", "-0XfF", NumberText::Hexadecimal, Status::Ok, true, 255},
    {"HexMaximum", "0xFFFFFFFFFFFFFFFF", NumberText::Hexadecimal, Status::Ok, false, kMax},
    {"HexOverflow", "0x10000000000000000", NumberText::Hexadecimal, Status::OutOfRange},
    {"HexPrefixAlone", "0x", NumberText::Hexadecimal, Status::Malformed},
    {"CharactersBesideTheLetters", "0x@`", NumberText::Hexadecimal, Status::Malformed},
    {"SpaceWithoutTheForm", " 5", NumberText::Decimal, Status::Malformed},
    {"SpaceAroundSign", "\n\t- \r5", NumberText::SpaceAroundSign, Status::Ok, true, 5},
    {"SpaceAfterDigits", "5 ", NumberText::SpaceAroundSign, Status::Malformed},
    {"VerticalTabIsNoBlank", "\v5", NumberText::SpaceAroundSign, Status::Malformed},
    {"Empty", "", NumberText::Decimal, Status::Malformed},
    {"SignAlone", "-", NumberText::Decimal, Status::Malformed},
    {"TwoSigns", "+-5", NumberText::Decimal, Status::Malformed},
    {"TrailingLetter", "12a", NumberText::Decimal, Status::Malformed},
    {"Fraction", "1.0", NumberText::Decimal, Status::Malformed},
};

class NumberTextIntegers : public testing::TestWithParam<IntegerRow>
{};

TEST_P(NumberTextIntegers, ReadsTheWholeTextOrNothing)
{
    const IntegerRow &row = GetParam();
    NumberText::Integer integer;
    ASSERT_EQ(NumberText::parseInteger(row.text, row.forms, integer), row.status);
    if (row.status == Status::Ok) {
        EXPECT_EQ(integer.negative, row.negative);
        EXPECT_EQ(integer.magnitude, row.magnitude);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, NumberTextIntegers, testing::ValuesIn(kIntegers),
                         [](const auto &row) { return std::string(row.param.name); });

struct RealRow
{
    const char *name;
    const char *text;
    Status status;
    double value = 0; // compared bit for bit
};

const RealRow kReals[] = {
    {"Tenth", "0.1", Status::Ok, 0.1},
    {"NegativeZero", "-0", Status::Ok, -0.0},
    {"PlusAndExponent", "+1.5e3", Status::Ok, 1500},
    {"NoWholePart", ".5", Status::Ok, 0.5},
    {"Subnormal", "4.9e-324", Status::Ok, 4.9e-324},
    {"InfinityAnyCase", "-INFinity", Status::Ok, -kInf},
    {"Inf", "inf", Status::Ok, kInf},
    {"Overflow", "1e400", Status::OutOfRange, kInf},
    {"NegativeOverflow", "-1e400", Status::OutOfRange, -kInf},
    {"Underflow", "-1e-400", Status::OutOfRange, -0.0},
    {"TwoSigns", "+-1", Status::Malformed},
    {"TrailingSpace", "1.5 ", Status::Malformed},
    {"LeadingSpace", " 1.5", Status::Malformed},
    {"CommaIsNoPoint", "1,5", Status::Malformed},
    {"NoHexFloats", "0x1A", Status::Malformed},
    {"Empty", "", Status::Malformed},
};

class NumberTextReals : public testing::TestWithParam<RealRow>
{};

TEST_P(NumberTextReals, ReadsTheWholeTextOrNothing)
{
    const RealRow &row = GetParam();
    double value = 0;
    ASSERT_EQ(NumberText::parseReal(row.text, value), row.status);
    if (row.status != Status::Malformed) {
        EXPECT_EQ(std::bit_cast<quint64>(value), std::bit_cast<quint64>(row.value)) << value;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, NumberTextReals, testing::ValuesIn(kReals),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(NumberText, ReadsEveryNaNAsTheOneQuietNaN)
{
    for (const char *text : {"nan", "-NaN", "nan(123)"}) {
        double value = 0;
        ASSERT_EQ(NumberText::parseReal(text, value), Status::Ok) << text;
        EXPECT_EQ(std::bit_cast<quint64>(value),
                  std::bit_cast<quint64>(std::numeric_limits<double>::quiet_NaN()))
            << text;
    }
}

struct ScanRow
{
    const char *name;
    const char *text;
    std::optional<double> real;
    std::optional<qint64> integer;
};

const ScanRow kScans[] = {
    {"TrailingText", "42 apples", 42.0, 42},
    {"SpaceSignExponent", " \t\n-1.5e3x", -1500.0, -1},
    {"HexIsAZeroAndText", "0x1A", 0.0, 0},
    {"FractionOnly", ".5", 0.5, std::nullopt},
    {"PointWithoutFraction", "5.x", 5.0, 5},
    {"ExponentWithoutDigits", "1e+", 1.0, 1},
    {"NoDigits", "apples", std::nullopt, std::nullopt},
    {"SignAlone", "-", std::nullopt, std::nullopt},
    {"InfinityIsNoDecimal", "inf", std::nullopt, std::nullopt},
    {"Saturates", "99999999999999999999", 1e20, std::numeric_limits<qint64>::max()},
    {"SaturatesNegative", "-99999999999999999999e999", -kInf, std::numeric_limits<qint64>::min()},
};

class NumberTextScans : public testing::TestWithParam<ScanRow>
{};

TEST_P(NumberTextScans, TakesTheLongestNumberAtTheStart)
{
    const ScanRow &row = GetParam();
    EXPECT_EQ(NumberText::scanReal(row.text), row.real);
    EXPECT_EQ(NumberText::scanInteger(row.text), row.integer);
}

INSTANTIATE_TEST_SUITE_P(Rows, NumberTextScans, testing::ValuesIn(kScans),
                         [](const auto &row) { return std::string(row.param.name); });

std::string formatted(auto value, char *(*format)(decltype(value), char *))
{
    char text[32];
    return std::string(text, format(value, text));
}

TEST(NumberText, WritesTextThatReadsBackExactly)
{
    EXPECT_EQ(formatted(std::numeric_limits<qint64>::min(), NumberText::formatInteger),
              "-9223372036854775808");
    EXPECT_EQ(formatted(kMax, NumberText::formatInteger), "18446744073709551615");
    for (const double d : {0.1, -0.0, 1e300, 5e-324, -2.2250738585072014e-308, 1.0 / 3}) {
        const std::string text = formatted(d, NumberText::formatReal);
        EXPECT_LE(text.size(), size_t(NumberText::kMaxRealLength));
        double back = 0;
        ASSERT_EQ(NumberText::parseReal(QByteArrayView(text.data(), qsizetype(text.size())), back),
                  Status::Ok)
            << text;
        EXPECT_EQ(std::bit_cast<quint64>(back), std::bit_cast<quint64>(d)) << text;
    }
    EXPECT_EQ(formatted(0.1, NumberText::formatReal), "0.1");
    EXPECT_EQ(formatted(-kInf, NumberText::formatReal), "-inf");
}

// The C library's own conversions take a comma for the point there.
TEST(NumberText, ReadsAndWritesTheSameUnderACommaDecimalLocale)
{
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        GTEST_SKIP() << "no de_DE.UTF-8 locale here (scripts/bootstrap makes one)";
    double value = 0;
    EXPECT_EQ(NumberText::parseReal("1.5", value), Status::Ok);
    EXPECT_EQ(value, 1.5);
    EXPECT_EQ(NumberText::parseReal("1e400", value), Status::OutOfRange);
    EXPECT_EQ(value, kInf);
    EXPECT_EQ(NumberText::scanReal("2.5 apples"), 2.5);
    EXPECT_EQ(formatted(2.5, NumberText::formatReal), "2.5");
    std::setlocale(LC_NUMERIC, before.c_str());
}

} // namespace
