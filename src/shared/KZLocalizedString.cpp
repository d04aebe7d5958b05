#include "KZLocalizedString.h"

#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

namespace {

using Table = QHash<int, QString>;

Table loadTable(const QString &language)
{
    QFile file(QStringLiteral(":/strings/%1.json").arg(language));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    Table table;
    for (auto it = object.begin(); it != object.end(); ++it)
        table.insert(it.key().toInt(), it.value().toString());
    return table;
}

const Table &strings()
{
    static const Table table = [] {
        Table english = loadTable(QStringLiteral("en"));
        const Table own = loadTable(QLocale().name().section(u'_', 0, 0));
        for (auto it = own.begin(); it != own.end(); ++it)
            english.insert(it.key(), it.value());
        return english;
    }();
    return table;
}

// Length of the printf conversion at `at` (just after '%'), or 0 if none is there.
qsizetype conversionLength(QStringView format, qsizetype at)
{
    static const QStringView kForms[] = {u"@",  u"lld", u"llu", u"ld", u"lu", u"zd",
                                         u"zu", u"d",   u"i",   u"u",  u"li"};
    for (const QStringView form : kForms) {
        if (format.mid(at).startsWith(form))
            return form.size();
    }
    return 0;
}

} // namespace

QString KZLocalizedStringWithID(int number, const QString &defaultText)
{
    const auto it = strings().constFind(number);
    return it == strings().constEnd() ? defaultText : *it;
}

QString KZLocalizedStringWithFormat(int number, const QString &defaultText,
                                    const QStringList &arguments)
{
    return KZStringWithFormat(KZLocalizedStringWithID(number, defaultText), arguments);
}

QString KZStringWithFormat(const QString &format, const QStringList &arguments)
{
    QString out;
    out.reserve(format.size());
    qsizetype next = 0;
    for (qsizetype i = 0; i < format.size(); ++i) {
        if (format[i] != u'%' || i + 1 >= format.size()) {
            out += format[i];
            continue;
        }
        if (format[i + 1] == u'%') {
            out += u'%';
            ++i;
            continue;
        }
        const qsizetype length = conversionLength(format, i + 1);
        if (length == 0) {
            out += format[i];
            continue;
        }
        out += next < arguments.size() ? arguments[next] : QString();
        ++next;
        i += length;
    }
    return out;
}
