#include "ADBracketMatching.h"

#include <QTextBlock>
#include <QTextDocument>

namespace {

constexpr char16_t kOpeners[] = u"([{<";
constexpr char16_t kClosers[] = u")]}>";

// Characters of a document by position, keeping the text of the block last
// read, so that a scan costs one lookup per block.
class BlockReader
{
public:
    explicit BlockReader(const QTextDocument &document) : _document(document) {}

    QChar operator()(qint64 position)
    {
        if (!_block.isValid() || position < _block.position() ||
            position >= _block.position() + _block.length()) {
            _block = _document.findBlock(int(position));
            _text = _block.text();
        }
        const qint64 offset = position - _block.position();
        return offset < _text.size() ? _text[offset] : QChar(u'\n');
    }

private:
    const QTextDocument &_document;
    QTextBlock _block;
    QString _text;
};

} // namespace

QChar ADBracketMatching::startCharForEndChar(QChar c)
{
    for (int i = 0; i < 4; ++i) {
        if (c == kClosers[i])
            return kOpeners[i];
    }
    return {};
}

QChar ADBracketMatching::endCharForStartChar(QChar c)
{
    for (int i = 0; i < 4; ++i) {
        if (c == kOpeners[i])
            return kClosers[i];
    }
    return {};
}

KZRange ADBracketMatching::balanceFrom(QStringView text, qint64 position)
{
    return balanceFrom([text](qint64 i) { return text[i]; }, text.size(), position);
}

KZRange ADBracketMatching::balanceFrom(const QTextDocument &document, qint64 position)
{
    return balanceFrom(BlockReader(document), document.characterCount() - 1, position);
}
