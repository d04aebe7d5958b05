// Dictionaries and arrays summarised, and strings mapped to chosen values.

#include "viewers/formatters/ADArrayFormatter.h"
#include "viewers/formatters/ADDictionaryFormatter.h"
#include "viewers/formatters/ADNumberFormatter.h"
#include "viewers/formatters/KZDictionaryFormatter.h"

#include "shared/KZClassRegistry.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "viewers/formatters/ADFormatterClasses.h"

#include "support/DefaultLocale.h"

#include <gtest/gtest.h>

namespace {

PlistValue threePairs(const PlistValue &name)
{
    PlistDictionary dictionary = PlistDictionary::create();
    dictionary.insert(QStringLiteral("Name"), name);
    dictionary.insert(QStringLiteral("b"), PlistValue(qint64(2)));
    PlistDictionary inner = PlistDictionary::create();
    inner.insert(QStringLiteral("leaf"), PlistValue(QStringLiteral("deep")));
    dictionary.insert(QStringLiteral("c"), PlistValue(inner));
    return PlistValue(dictionary);
}

TEST(DictionaryFormatter, CountsPairsAndPreviewsScalarsAtItsKeyPath)
{
    struct Row
    {
        const char *name;
        const char *keyPath;
        PlistValue value;
        const char *shown;
    };
    const Row rows[] = {
        {"NoKeyPath", "", PlistValue(qint64(5)), "3 key/value pairs"},
        {"Number", "Name", PlistValue(qint64(5)), "3 key/value pairs (Name = 5)"},
        {"Boolean", "Name", PlistValue(true), "3 key/value pairs (Name = YES)"},
        {"String", "Name", PlistValue(QStringLiteral("x")), "3 key/value pairs (Name = x)"},
        {"DataHasNoPreview", "Name", PlistValue::data("ab"), "3 key/value pairs"},
        {"MissingKey", "Nope", PlistValue(qint64(5)), "3 key/value pairs"},
        {"NestedKeyPath", "c.leaf", PlistValue(qint64(5)), "3 key/value pairs (c.leaf = deep)"},
        {"PathThroughAScalar", "b.leaf", PlistValue(qint64(5)), "3 key/value pairs"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        ADDictionaryFormatter formatter;
        formatter.setPreviewKeyPath(QString::fromLatin1(row.keyPath));
        const PlistValue dictionary = threePairs(row.value);
        EXPECT_EQ(formatter.stringForObjectValue(dictionary), QString::fromUtf8(row.shown));
        const KZStyledText styled = formatter.attributedStringForObjectValue(dictionary).value();
        EXPECT_EQ(styled.textRole, KZStyledText::Role::Disabled);
        EXPECT_EQ(styled.font, KZStyledText::Font::OutlineFont);
    }
    QString message = QStringLiteral("untouched");
    EXPECT_FALSE(ADDictionaryFormatter().getObjectValue(nullptr, QStringLiteral("x"), &message));
    EXPECT_EQ(message, QStringLiteral("untouched"));
    EXPECT_FALSE(ADDictionaryFormatter().stringForObjectValue(PlistValue(qint64(1))).has_value());
}

TEST(ArrayFormatter, CountsObjects)
{
    PlistArray array = PlistArray::create();
    for (int i = 0; i < 3; ++i)
        array.append(PlistValue(qint64(i)));
    const ADArrayFormatter formatter;
    EXPECT_EQ(formatter.stringForObjectValue(PlistValue(array)),
              QStringLiteral("3 ordered objects"));
    EXPECT_EQ(formatter.attributedStringForObjectValue(PlistValue(array))->textRole,
              KZStyledText::Role::Disabled);
    EXPECT_FALSE(formatter.getObjectValue(nullptr, QStringLiteral("3"), nullptr));
}

TEST(DictionaryFormatterOfValues, MapsNamesToValuesAndPassesOthersToTheRawFormatter)
{
    KZDictionaryFormatter formatter({{QStringLiteral("Low"), PlistValue(qint64(1))},
                                     {QStringLiteral("High"), PlistValue(qint64(9))},
                                     {QStringLiteral("Top"), PlistValue(qint64(9))}});
    EXPECT_EQ(formatter.stringForObjectValue(PlistValue(qint64(1))), QStringLiteral("Low"));
    EXPECT_EQ(formatter.stringForObjectValue(PlistValue(qint64(9))), QStringLiteral("Top"));
    EXPECT_EQ(formatter.stringForObjectValue(PlistValue(QStringLiteral("free"))),
              QStringLiteral("free"));
    EXPECT_FALSE(formatter.stringForObjectValue(PlistValue(qint64(4))).has_value());
    PlistValue value;
    ASSERT_TRUE(formatter.getObjectValue(&value, QStringLiteral("High"), nullptr));
    EXPECT_EQ(value.toInteger(), 9);
    ASSERT_TRUE(formatter.getObjectValue(&value, QStringLiteral("other"), nullptr));
    EXPECT_EQ(value.toString(), QStringLiteral("other"));

    formatter.setMissingValueFormatter(std::make_shared<ADNumberFormatter>());
    EXPECT_EQ(formatter.stringForObjectValue(PlistValue(qint64(4))), QStringLiteral("4"));
    ASSERT_TRUE(formatter.getObjectValue(&value, QStringLiteral("42"), nullptr));
    EXPECT_EQ(value.toInteger(), 42);
    QString message;
    EXPECT_FALSE(formatter.getObjectValue(&value, QString(), &message));
    EXPECT_EQ(message, QStringLiteral("No valid object value found for string \"\""));

    const std::unique_ptr<KZFormatter> copy = formatter.copy();
    EXPECT_EQ(copy->stringForObjectValue(PlistValue(qint64(1))), QStringLiteral("Low"));
    EXPECT_EQ(copy->stringForObjectValue(PlistValue(qint64(4))), QStringLiteral("4"));
}

TEST(FormatterClasses, AreMadeByNameWithTheirProperties)
{
    const DefaultLocale english("en_US");
    ADRegisterFormatterClasses();
    PlistDictionary properties = PlistDictionary::create();
    properties.insert(QStringLiteral("floatFormat"), PlistValue(QStringLiteral("0.00")));
    PlistDictionary info = PlistDictionary::create();
    info.insert(QStringLiteral("class"), PlistValue(QStringLiteral("ADNumberFormatter")));
    info.insert(QStringLiteral("properties"), PlistValue(properties));
    std::unique_ptr<QObject> object = KZClassRegistry::objectFromInfoDictionary(PlistValue(info));
    auto *formatter = qobject_cast<ADNumberFormatter *>(object.get());
    ASSERT_TRUE(formatter);
    EXPECT_EQ(formatter->stringForObjectValue(PlistValue(1.5)), QStringLiteral("1.50"));
    EXPECT_EQ(formatter->copy()->stringForObjectValue(PlistValue(1.5)), QStringLiteral("1.50"));

    properties.insert(QStringLiteral("noSuchProperty"), PlistValue(true));
    EXPECT_EQ(KZClassRegistry::objectFromInfoDictionary(PlistValue(info)), nullptr);
    info.insert(QStringLiteral("class"), PlistValue(QStringLiteral("NoSuchFormatter")));
    EXPECT_EQ(KZClassRegistry::objectFromInfoDictionary(PlistValue(info)), nullptr);
}

} // namespace
