#pragma once

// The interoperability corpus beside the project: every file with the format
// its manifest names and whether a correct reader accepts it.

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>

#include <string>
#include <vector>

struct CorpusFile
{
    QString file;   // relative to the corpus folder
    QString format; // xml, binary, ascii, strings, json or unknown
    QString expect; // valid, invalid or unknown

    QString path() const { return QStringLiteral(ARBORDECK_CORPUS_DIR "/") + file; }
    QByteArray bytes() const
    {
        QFile f(path());
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    /// A test name: letters and digits of the path.
    std::string testName() const
    {
        std::string name;
        for (const QChar c : file)
            name += c.isLetterOrNumber() && c.unicode() < 128 ? char(c.unicode()) : '_';
        return name;
    }
};

inline std::vector<CorpusFile> corpusFiles()
{
    QFile manifest(QStringLiteral(ARBORDECK_CORPUS_DIR "/MANIFEST.tsv"));
    std::vector<CorpusFile> rows;
    if (!manifest.open(QIODevice::ReadOnly))
        return rows;
    manifest.readLine(); // header
    while (!manifest.atEnd()) {
        const QStringList cells = QString::fromUtf8(manifest.readLine()).split(u'\t');
        if (cells.size() >= 6)
            rows.push_back({cells[0], cells[4], cells[5]});
    }
    return rows;
}

/// The rows of the given formats.
inline std::vector<CorpusFile> corpusFiles(const QStringList &formats)
{
    std::vector<CorpusFile> rows;
    for (const CorpusFile &row : corpusFiles()) {
        if (formats.contains(row.format))
            rows.push_back(row);
    }
    return rows;
}
