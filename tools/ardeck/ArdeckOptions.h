#pragma once

#include <QString>
#include <QStringList>

/// The command line of `ardeck`, parsed without opening any file. Every usage
/// mistake is collected in `usageErrors`; the verb runs only when there are none.
struct ArdeckOptions
{
    QString verb;      // lint, convert, print, get, set, insert, remove
    QStringList files; // "-" is standard input
    QString format;    // convert: the target; get: the form of a container
    QString output;    // convert -o; "-" is standard output; empty: in place
    QString keyPath;   // get, set, insert, remove
    QString type;      // set, insert: string, integer, real, bool, date, data, dict, array
    QString value;     // set, insert; may be absent for dict and array
    bool hasValue = false;
    bool humanReadable = false;
    bool coerce = false; // convert: turn what the format cannot hold into strings
    bool help = false;
    QStringList usageErrors;

    /// `arguments` without the program name.
    static ArdeckOptions parse(const QStringList &arguments);
    static QString usage();
};
