#include "BenchShapes.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistSerialization.h"

#include <QByteArray>
#include <QFile>

#include <cstdio>
#include <cstdlib>

#include <random>

namespace {

const char *const kWords[] = {"alpha",  "Bundle", "identifier", "Version", "enabled", "path",
                              "Kernel", "quirks", "name",       "value",   "Comment", "arch"};

class Maker
{
public:
    explicit Maker(bool jsonSafe) : _jsonSafe(jsonSafe) {}

    QString word() { return QString::fromLatin1(kWords[_rng() % std::size(kWords)]); }
    QString text()
    {
        QString s = word();
        for (unsigned n = _rng() % 5; n > 0; --n)
            s += u' ' + word();
        if (_rng() % 16 == 0)
            s += QStringLiteral(" caf\u00e9 \u2603 & <tag>");
        return s;
    }
    PlistValue data(qsizetype size)
    {
        QByteArray bytes(size, Qt::Uninitialized);
        for (char &b : bytes)
            b = char(_rng());
        return _jsonSafe ? PlistValue(QString::fromLatin1(bytes.toBase64()))
                         : PlistValue::data(bytes);
    }
    PlistValue date()
    {
        const double seconds = double(_rng() % 800000000);
        return _jsonSafe ? PlistValue(QString::number(seconds)) : PlistValue::date(seconds);
    }
    PlistValue scalar()
    {
        switch (_rng() % 6) {
        case 0:
            return PlistValue(text());
        case 1:
            return PlistValue(qint64(_rng() % 100000) - 5000);
        case 2:
            return PlistValue(double(_rng() % 100000) / 7.0);
        case 3:
            return PlistValue(_rng() % 2 == 0);
        case 4:
            return date();
        default:
            return data(8 + _rng() % 24);
        }
    }
    PlistValue record(qint64 id)
    {
        PlistDictionary r = PlistDictionary::create(6);
        r.insert(QStringLiteral("name"), PlistValue(text()));
        r.insert(QStringLiteral("id"), PlistValue(id));
        r.insert(QStringLiteral("enabled"), PlistValue(id % 3 != 0));
        r.insert(QStringLiteral("score"), PlistValue(double(id) / 3.0));
        r.insert(QStringLiteral("created"), date());
        PlistArray tags = PlistArray::create(2);
        tags.append(PlistValue(word()));
        tags.append(PlistValue(word()));
        r.insert(QStringLiteral("tags"), tags);
        return r;
    }
    // A configuration section: a few scalars, a list of entries, a nested section.
    PlistValue section(int depth)
    {
        PlistDictionary d = PlistDictionary::create();
        for (int i = 0; i < 6; ++i)
            d.insert(word() + QString::number(i), scalar());
        PlistArray entries = PlistArray::create();
        for (int i = 0; i < 4; ++i)
            entries.append(record(i));
        d.insert(QStringLiteral("Entries"), entries);
        if (depth > 0) {
            for (int i = 0; i < 3; ++i)
                d.insert(QStringLiteral("Section%1").arg(i), section(depth - 1));
        }
        return d;
    }

private:
    bool _jsonSafe;
    std::mt19937_64 _rng{20261122};
};

// Rough XML bytes per unit of each shape, to size a value without writing it.
constexpr qint64 kWideEntryBytes = 70;
constexpr qint64 kRecordBytes = 330;
constexpr qint64 kSectionBytes = 130000; // a depth-4 section

} // namespace

const std::vector<BenchShape> &allBenchShapes()
{
    static const std::vector<BenchShape> shapes{BenchShape::Wide, BenchShape::Nested,
                                                BenchShape::Records, BenchShape::Blobs};
    return shapes;
}

QString benchShapeName(BenchShape shape)
{
    switch (shape) {
    case BenchShape::Wide:
        return QStringLiteral("wide");
    case BenchShape::Nested:
        return QStringLiteral("nested");
    case BenchShape::Records:
        return QStringLiteral("records");
    case BenchShape::Blobs:
        return QStringLiteral("blobs");
    }
    return {};
}

PlistValue makeBenchValue(BenchShape shape, qint64 targetBytes, bool jsonSafe)
{
    Maker make(jsonSafe);
    switch (shape) {
    case BenchShape::Wide: {
        PlistDictionary d = PlistDictionary::create();
        for (qint64 i = 0, n = targetBytes / kWideEntryBytes; i < n; ++i)
            d.insert(make.word() + u'_' + QString::number(i), make.scalar());
        return d;
    }
    case BenchShape::Nested: {
        PlistDictionary d = PlistDictionary::create();
        for (qint64 i = 0, n = std::max<qint64>(1, targetBytes / kSectionBytes); i < n; ++i)
            d.insert(QStringLiteral("Config%1").arg(i), make.section(4));
        return d;
    }
    case BenchShape::Records: {
        PlistArray a = PlistArray::create();
        for (qint64 i = 0, n = targetBytes / kRecordBytes; i < n; ++i)
            a.append(make.record(i));
        return a;
    }
    case BenchShape::Blobs: {
        PlistDictionary d = PlistDictionary::create();
        const qint64 blobBytes = targetBytes * 3 / 4 / 8; // Base64 grows data by a third
        for (int i = 0; i < 8; ++i)
            d.insert(QStringLiteral("blob%1").arg(i), make.data(blobBytes));
        return d;
    }
    }
    return {};
}

QString writeBenchFile(const QString &path, const PlistValue &value, ADPlistFormat format)
{
    const WriteResult written = PlistSerialization::write(value, format, false);
    QFile file(path);
    if (!written || !file.open(QIODevice::WriteOnly) ||
        file.write(written.data) != written.data.size()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        std::exit(1);
    }
    return path;
}
