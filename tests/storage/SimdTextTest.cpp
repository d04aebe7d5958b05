#include "storage/SimdText.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

// Texts of every length up to a few blocks, from an alphabet where each
// scan's stops are common: blanks, markup, quotes, backslashes, control
// characters, NUL and bytes beyond ASCII, among letters.
std::vector<QByteArray> texts()
{
    static const char kAlphabet[] = "aZ9 \t\n\r<&>\"'\\\x01\x1f\x7f\x80\xc3\xff";
    std::mt19937 random(13);
    std::vector<QByteArray> made;
    for (int size = 0; size <= 70; ++size) {
        for (int sample = 0; sample < 40; ++sample) {
            QByteArray text(size, 'a');
            // Mostly one character, so that long runs reach the vector steps.
            const char common = kAlphabet[random() % 4];
            for (char &c : text)
                c = random() % 8 == 0 ? kAlphabet[random() % (sizeof kAlphabet)] : common;
            made.push_back(text);
        }
    }
    return made;
}

TEST(SimdText, ScansAsItsScalarTwinDoes)
{
    for (const QByteArray &text : texts()) {
        const char *begin = text.constData();
        const char *end = begin + text.size();
        const std::string shown = text.toHex().toStdString();
        EXPECT_EQ(SimdText::skipSpace(begin, end), SimdText::Scalar::skipSpace(begin, end))
            << shown;
        bool vectorHigh = false;
        bool scalarHigh = false;
        EXPECT_EQ(SimdText::findMarkup(begin, end, vectorHigh),
                  SimdText::Scalar::findMarkup(begin, end, scalarHigh))
            << shown;
        EXPECT_EQ(vectorHigh, scalarHigh) << shown;
        EXPECT_EQ(SimdText::findStringEnd(begin, end, '"', ' '),
                  SimdText::Scalar::findStringEnd(begin, end, '"', ' '))
            << shown;
        EXPECT_EQ(SimdText::findStringEnd(begin, end, '\'', 1),
                  SimdText::Scalar::findStringEnd(begin, end, '\'', 1))
            << shown;
        for (const bool nulStops : {false, true}) {
            EXPECT_EQ(SimdText::skipAscii(begin, end, nulStops),
                      SimdText::Scalar::skipAscii(begin, end, nulStops))
                << shown;
        }
        EXPECT_EQ(SimdText::findXmlSpecial(begin, end),
                  SimdText::Scalar::findXmlSpecial(begin, end))
            << shown;
    }
}

TEST(SimdText, EncodesBase64AsItsScalarTwinAndQtDo)
{
    std::mt19937 random(64);
    for (qsizetype blocks = 0; blocks <= 9; ++blocks) {
        QByteArray bytes(12 * blocks + 4, Qt::Uninitialized); // four to spare, as allowed
        for (char &b : bytes)
            b = char(random());
        const auto *in = reinterpret_cast<const uchar *>(bytes.constData());
        QByteArray vector(16 * blocks, '?');
        QByteArray scalar(16 * blocks, '?');
        const char *vectorEnd = SimdText::encodeBase64(in, blocks, vector.data());
        const char *scalarEnd = SimdText::Scalar::encodeBase64(in, blocks, scalar.data());
        EXPECT_EQ(vectorEnd - vector.constData(), 16 * blocks);
        EXPECT_EQ(scalarEnd - scalar.constData(), 16 * blocks);
        EXPECT_EQ(vector, scalar) << blocks;
        EXPECT_EQ(scalar, bytes.first(12 * blocks).toBase64()) << blocks;
    }
}

} // namespace
