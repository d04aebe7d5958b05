#include "document/ADXMLTagColorizer.h"

#include <QPlainTextDocumentLayout>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>

#include <gtest/gtest.h>

#include <array>

namespace {

using Ranges = std::vector<KZRange>;

struct BlockRow
{
    const char *name;
    const char16_t *text;
    bool startsInside;
    Ranges tags;
    bool endsInside;
};

const BlockRow kBlockRows[] = {
    {"TwoTags", u"<a>b</a>", false, {{0, 3}, {4, 4}}, false},
    {"ClosesOneOpensAnother", u"x>y<z", true, {{0, 2}, {3, 2}}, true},
    {"AllInsideATag", u"abc", true, {{0, 3}}, true},
    {"AnOpenerInsideATagOpensNothing", u"<a <b>", false, {{0, 6}}, false},
    {"NoTags", u"plain > text", false, {}, false},
};

class ADXMLTagColorizerBlocks : public testing::TestWithParam<BlockRow>
{};

TEST_P(ADXMLTagColorizerBlocks, FindsTagsInALine)
{
    const auto found = ADXMLTagColorizer::tagsInBlock(QString::fromUtf16(GetParam().text),
                                                      GetParam().startsInside);
    EXPECT_EQ(found.tags, GetParam().tags);
    EXPECT_EQ(found.endsInsideTag, GetParam().endsInside);
}

INSTANTIATE_TEST_SUITE_P(Rows, ADXMLTagColorizerBlocks, testing::ValuesIn(kBlockRows),
                         [](const auto &row) { return std::string(row.param.name); });

class ADXMLTagColorizerTest : public testing::Test
{
protected:
    ADXMLTagColorizerTest()
    {
        _document.setDocumentLayout(new QPlainTextDocumentLayout(&_document)); // as a text view has
        _colorizer.setTagColor(Qt::blue);
    }

    void setText(const QString &text)
    {
        _document.setPlainText(text);
        colorAll();
    }
    void colorAll() { _colorizer.colorBlocks(_document.firstBlock(), _document.lastBlock()); }
    void insert(qint64 position, const QString &text)
    {
        QTextCursor cursor(&_document);
        cursor.setPosition(int(position));
        cursor.insertText(text);
        colorAll();
    }
    void remove(qint64 position, qint64 length)
    {
        QTextCursor cursor(&_document);
        cursor.setPosition(int(position));
        cursor.setPosition(int(position + length), QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
        colorAll();
    }
    // The coloured ranges of each line.
    std::vector<Ranges> colored() const
    {
        std::vector<Ranges> lines;
        for (QTextBlock block = _document.firstBlock(); block.isValid(); block = block.next()) {
            Ranges ranges;
            for (const QTextLayout::FormatRange &range : block.layout()->formats()) {
                EXPECT_EQ(range.format.foreground().color(), _colorizer.tagColor());
                ranges.push_back({range.start, range.length});
            }
            lines.push_back(ranges);
        }
        return lines;
    }

    QTextDocument _document;
    ADXMLTagColorizer _colorizer{&_document};
};

TEST_F(ADXMLTagColorizerTest, ColoursTagsAcrossLines)
{
    setText(QStringLiteral("<a\nb\nc>d <e>"));
    EXPECT_EQ(colored(), (std::vector<Ranges>{{{0, 2}}, {{0, 1}}, {{0, 2}, {4, 3}}}));
}

TEST_F(ADXMLTagColorizerTest, ALoneOpenerColoursNothing)
{
    setText(QStringLiteral("a < b\nc\nd"));
    EXPECT_EQ(colored(), (std::vector<Ranges>{{}, {}, {}}));
}

TEST_F(ADXMLTagColorizerTest, TypingTheCloserColoursTheWholeTag)
{
    setText(QStringLiteral("x\n<a"));
    EXPECT_EQ(colored(), (std::vector<Ranges>{{}, {}}));
    insert(4, QStringLiteral(">"));
    EXPECT_EQ(colored(), (std::vector<Ranges>{{}, {{0, 3}}}));
}

TEST_F(ADXMLTagColorizerTest, EditsThatMoveTagEndsRecolourTheLinesBelow)
{
    setText(QStringLiteral("<a>\nb\nc"));
    EXPECT_EQ(colored(), (std::vector<Ranges>{{{0, 3}}, {}, {}}));
    remove(2, 1); // "<a": nothing closes it now
    EXPECT_EQ(colored(), (std::vector<Ranges>{{}, {}, {}}));
    insert(6, QStringLiteral(">")); // "c>" closes it again, three lines on
    EXPECT_EQ(colored(), (std::vector<Ranges>{{{0, 2}}, {{0, 1}}, {{0, 2}}}));
    insert(3, QStringLiteral("<")); // "<a\n<b": a "<" inside a tag opens nothing
    EXPECT_EQ(colored(), (std::vector<Ranges>{{{0, 2}}, {{0, 2}}, {{0, 2}}}));
}

TEST_F(ADXMLTagColorizerTest, ColoursOnlyTheLinesItIsAskedFor)
{
    QString text;
    for (int i = 0; i < 1000; ++i)
        text += QStringLiteral("\t<key>k%1</key>\n").arg(i);
    _document.setPlainText(text);
    const QTextBlock first = _document.findBlockByNumber(500);
    _colorizer.colorBlocks(first, _document.findBlockByNumber(509));
    EXPECT_EQ(first.layout()->formats().size(), 2);
    EXPECT_EQ(_document.findBlockByNumber(509).layout()->formats().size(), 2);
    EXPECT_TRUE(_document.findBlockByNumber(510).layout()->formats().isEmpty());
    for (int i = 0; i < 499; ++i) // the look back stops at the line before
        ASSERT_EQ(_document.findBlockByNumber(i).userState(), -1) << i;
}

TEST_F(ADXMLTagColorizerTest, ColouringNeverShowsAsAnEdit)
{
    setText(QStringLiteral("<a>\nb\n<c>"));
    std::vector<std::array<int, 3>> changes;
    QObject::connect(&_document, &QTextDocument::contentsChange,
                     [&](int position, int removed, int added) {
                         changes.push_back({position, removed, added});
                     });
    _colorizer.setTagColor(Qt::red);
    colorAll();
    insert(5, QStringLiteral("x"));
    EXPECT_EQ(changes, (std::vector<std::array<int, 3>>{{5, 0, 1}}));
}

TEST_F(ADXMLTagColorizerTest, OffOrInAnotherColourEveryLineIsRedone)
{
    setText(QStringLiteral("<a>\n<b>"));
    _colorizer.setTagColor(Qt::red);
    colorAll();
    EXPECT_EQ(colored(), (std::vector<Ranges>{{{0, 3}}, {{0, 3}}}));
    _colorizer.setEnabled(false);
    colorAll();
    EXPECT_EQ(colored(), (std::vector<Ranges>{{}, {}}));
}

} // namespace
