#pragma once

#include "ArdeckOptions.h"

#include "shared/ADTypes.h"
#include "shared/PlistValue.h"

#include <QByteArray>
#include <QString>

#include <functional>

/// Where the tool reads and writes: standard input, standard output (data
/// only) and standard error (one diagnostic a call). Tests pass buffers.
struct ArdeckIO
{
    std::function<QByteArray()> readInput;
    std::function<void(const QByteArray &)> writeOutput;
    std::function<void(const QString &)> writeError;
};

/// Runs one verb of `ardeck` over the program's own reading and writing code.
/// Only the editing verbs and coercion build a tree; the others work on the
/// plain value. Trees built here keep each dictionary's key order as the file
/// gives it, so nothing the user did not touch moves.
class ADPlistObject;

class ArdeckTool
{
public:
    explicit ArdeckTool(ArdeckIO io);

    /// The exit status: 0 on success, 1 when any file failed, 2 for usage.
    int run(const ArdeckOptions &options);

private:
    struct Loaded
    {
        PlistValue value; // none when the file did not read
        ADPlistFormat format = ADPlistFormatUnknown;
        QString error;
    };

    int lint(const ArdeckOptions &options);
    int convert(const ArdeckOptions &options);
    int print(const ArdeckOptions &options);
    int get(const ArdeckOptions &options);
    int edit(const ArdeckOptions &options);
    Loaded load(const QString &file) const;
    bool writeValue(const QString &file, const PlistValue &value, ADPlistFormat format,
                    bool humanReadable, const QString &target);
    void fail(const QString &file, const QString &message) const;
    bool fitsFormat(const QString &file, ADPlistObject &root, ADPlistFormat format,
                    bool coerce) const;
    bool convertedValue(const QString &file, const PlistValue &value, ADPlistFormat format,
                        bool coerce, const QString &target, bool humanReadable);

    ArdeckIO _io;
};
