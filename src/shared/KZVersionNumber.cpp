#include "KZVersionNumber.h"

#include <QtGlobal>

KZVersionNumber KZVersionNumber::versionWithString(const QString &text)
{
    KZVersionNumber version;
    quint64 part = 0;
    bool inPart = false;
    for (const QChar c : text.trimmed()) {
        if (c.isDigit() && c.unicode() < 128) {
            part = part * 10 + quint64(c.unicode() - u'0');
            inPart = true;
        } else if (c == u'.' && inPart) {
            version._parts.append(part);
            part = 0;
            inPart = false;
        } else {
            break;
        }
    }
    if (inPart)
        version._parts.append(part);
    return version;
}

int KZVersionNumber::compare(const KZVersionNumber &other) const
{
    const qsizetype count = std::max(_parts.size(), other._parts.size());
    for (qsizetype i = 0; i < count; ++i) {
        const quint64 mine = _parts.value(i);
        const quint64 theirs = other._parts.value(i);
        if (mine != theirs)
            return mine < theirs ? -1 : 1;
    }
    return 0;
}

KZVersionNumber KZSystemVersionNumber()
{
    return KZVersionNumber::versionWithString(QString::fromLatin1(qVersion()));
}
