#include "outline/ADObjcLiteralWriter.h"
#include "outline/ADSwiftLiteralWriter.h"

#include "support/ValueBuilders.h"

#include <gtest/gtest.h>

namespace {

struct LiteralRow
{
    const char *name;
    std::vector<PlistValue> values;
    const char *swift;
    const char *objc;
};

class LiteralWriting : public testing::TestWithParam<LiteralRow>
{};

TEST_P(LiteralWriting, WritesBothLanguages)
{
    const LiteralRow &row = GetParam();
    EXPECT_EQ(ADSwiftLiteralWriter(row.values).swiftLiteral(), QString::fromUtf8(row.swift));
    EXPECT_EQ(ADObjcLiteralWriter(row.values).objcLiteral(), QString::fromUtf8(row.objc));
}

// Hand-checked texts; dictionary values carry their debug-quoted wrapper.
INSTANTIATE_TEST_SUITE_P(
    ADLiteralWriter, LiteralWriting,
    testing::Values(
        LiteralRow{
            "BackslashDoubledBeforeQuotes", {str("a\"b\\c")}, R"~("a\"b\\c")~", R"~(@"a\"b\\c")~"},
        LiteralRow{"LineFeedStaysRaw", {str("a\nb")}, "\"a\nb\"", "@\"a\nb\""},
        LiteralRow{
            "SeveralMakeAnArray", {str("x"), str("y")}, R"~(["x", "y"])~", R"~(@[@"x", @"y"])~"},
        LiteralRow{"NoneMakeAnEmptyArray", {}, "[]", "@[]"},
        LiteralRow{"BooleanIsNotOne",
                   {arrayOf({PlistValue(true), PlistValue(1), PlistValue(2.5)})},
                   "[true, 1, 2.5]",
                   "@[@YES, @(1), @(2.5)]"},
        LiteralRow{"EmptyDictionaryIsBrackets", {dictionaryOf({})}, "[]", "@{}"},
        LiteralRow{
            "KeysByCodePoint",
            {dictionaryOf({{"b", PlistValue(1)}, {"a", PlistValue(2)}, {"C", PlistValue(3)}})},
            R"~(["C": Optional("3"), "a": Optional("2"), "b": Optional("1")])~",
            R"~(@{@"C": Optional("@(3)"), @"a": Optional("@(2)"), @"b": Optional("@(1)")})~"},
        LiteralRow{"DictionaryValueDebugQuoted",
                   {dictionaryOf({{"a", str("b\n")}})},
                   R"~(["a": Optional("\"b\n\"")])~",
                   R"~(@{@"a": Optional("@\"b\n\"")})~"},
        LiteralRow{"DateValueIsNil",
                   {dictionaryOf({{"d", PlistValue::date(1000)}})},
                   R"~(["d": nil])~",
                   R"~(@{@"d": nil})~"},
        LiteralRow{
            "DatesAndDataOnTheirOwn",
            {arrayOf({PlistValue::date(1000), PlistValue::data(QByteArray("hi"))})},
            R"~([NSDate(timeIntervalSinceReferenceDate: 1000.0), NSData(base64EncodedString: "aGk=", options: [])!])~",
            R"~(@[[NSDate dateWithTimeIntervalSinceReferenceDate:1000.0], [[NSData alloc] initWithBase64EncodedString:@"aGk=" options:0]])~"},
        LiteralRow{"WrapperOnlyForDictionaryValues",
                   {arrayOf({dictionaryOf({{"k", arrayOf({str("v")})}})})},
                   R"~([["k": Optional("[\"v\"]")]])~",
                   R"~(@[@{@"k": Optional("@[@\"v\"]")}])~"}),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace
