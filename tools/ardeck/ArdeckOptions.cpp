#include "ArdeckOptions.h"

namespace {

const QStringList kFormats{"xml", "binary", "ascii", "json"};
const QStringList kTypes{"string", "integer", "real", "bool", "date", "data", "dict", "array"};

// Splits off the options of `convert`; the rest are files.
void parseConvert(ArdeckOptions &options, QStringList rest)
{
    if (rest.isEmpty()) {
        options.usageErrors << QStringLiteral("convert needs a format and at least one file");
        return;
    }
    options.format = rest.takeFirst();
    if (!kFormats.contains(options.format))
        options.usageErrors << QStringLiteral(
                                   "unknown format \"%1\" (use xml, binary, ascii or json)")
                                   .arg(options.format);
    while (!rest.isEmpty()) {
        const QString word = rest.takeFirst();
        if (word == u"-o") {
            if (rest.isEmpty())
                options.usageErrors << QStringLiteral("-o needs a file name");
            else
                options.output = rest.takeFirst();
        } else if (word == u"--human-readable") {
            options.humanReadable = true;
        } else if (word == u"--coerce") {
            options.coerce = true;
        } else if (word.startsWith(u'-') && word != u"-") {
            options.usageErrors << QStringLiteral("unknown option %1").arg(word);
        } else {
            options.files << word;
        }
    }
    if (options.files.isEmpty())
        options.usageErrors << QStringLiteral("convert needs at least one file");
    if (!options.output.isEmpty() && options.files.size() > 1)
        options.usageErrors << QStringLiteral("-o takes one input file");
}

void parseGet(ArdeckOptions &options, const QStringList &rest)
{
    if (rest.size() < 2 || rest.size() > 3) {
        options.usageErrors << QStringLiteral("get needs FILE KEYPATH [FORMAT]");
        return;
    }
    options.files << rest[0];
    options.keyPath = rest[1];
    options.format = rest.size() == 3 ? rest[2] : QStringLiteral("xml");
    if (!kFormats.contains(options.format))
        options.usageErrors << QStringLiteral(
                                   "unknown format \"%1\" (use xml, binary, ascii or json)")
                                   .arg(options.format);
}

// set and insert: FILE KEYPATH TYPE VALUE (VALUE optional for containers).
void parseEdit(ArdeckOptions &options, const QStringList &rest)
{
    const bool container = rest.size() >= 3 && (rest[2] == u"dict" || rest[2] == u"array");
    if (rest.size() != 4 && !(rest.size() == 3 && container)) {
        options.usageErrors << QStringLiteral("%1 needs FILE KEYPATH TYPE VALUE").arg(options.verb);
        return;
    }
    options.files << rest[0];
    options.keyPath = rest[1];
    options.type = rest[2];
    options.hasValue = rest.size() == 4;
    options.value = rest.value(3);
    if (!kTypes.contains(options.type))
        options.usageErrors
            << QStringLiteral("unknown type \"%1\" (use %2)").arg(options.type, kTypes.join(u", "));
}

} // namespace

ArdeckOptions ArdeckOptions::parse(const QStringList &arguments)
{
    ArdeckOptions options;
    if (arguments.isEmpty()) {
        options.usageErrors << QStringLiteral("no verb given");
        return options;
    }
    // Asked for help before the verb or right after it; further on, the
    // words are file names, keys and values, which may look like options.
    const auto isHelp = [](const QString &word) { return word == u"--help" || word == u"-h"; };
    if (isHelp(arguments.first()) || (arguments.size() == 2 && isHelp(arguments[1]))) {
        options.help = true;
        return options;
    }
    options.verb = arguments.first();
    const QStringList rest = arguments.mid(1);
    if (options.verb == u"lint") {
        options.files = rest;
        if (rest.isEmpty())
            options.usageErrors << QStringLiteral("lint needs at least one file");
    } else if (options.verb == u"print") {
        options.files = rest;
        if (rest.size() != 1)
            options.usageErrors << QStringLiteral("print needs exactly one file");
    } else if (options.verb == u"convert") {
        parseConvert(options, rest);
    } else if (options.verb == u"get") {
        parseGet(options, rest);
    } else if (options.verb == u"set" || options.verb == u"insert") {
        parseEdit(options, rest);
    } else if (options.verb == u"remove") {
        options.files = rest.mid(0, 1);
        options.keyPath = rest.value(1);
        if (rest.size() != 2)
            options.usageErrors << QStringLiteral("remove needs FILE KEYPATH");
    } else {
        options.usageErrors << QStringLiteral("unknown verb \"%1\"").arg(options.verb);
    }
    return options;
}

QString ArdeckOptions::usage()
{
    return QStringLiteral(
        "usage: ardeck VERB ...\n"
        "\n"
        "Reads and writes property lists in XML, binary, old-style ASCII and JSON form.\n"
        "FILE may be - for standard input. Keys keep the order the file gives them.\n"
        "\n"
        "  ardeck lint FILE...\n"
        "      Checks that each file reads; prints \"FILE: OK\" or \"FILE: <why not>\".\n"
        "      Exits 0 only when every file is OK.\n"
        "  ardeck convert FORMAT [-o OUT] [--human-readable] [--coerce] FILE...\n"
        "      Rewrites each file as FORMAT (xml, binary, ascii or json), in place unless\n"
        "      -o names another file (- for standard output). --human-readable indents JSON.\n"
        "      A value the format cannot hold is refused, naming it and its key path, and\n"
        "      the file is left untouched; with --coerce such values become strings (data\n"
        "      as hexadecimal, dates as text) first. JSON needs a dictionary or array at\n"
        "      the top, even with --coerce.\n"
        "  ardeck print FILE\n"
        "      Shows the whole value indented, with the type of every item.\n"
        "  ardeck get FILE KEYPATH [FORMAT]\n"
        "      Prints the value at KEYPATH: a scalar as plain text, a container as a\n"
        "      property list in FORMAT (default xml). KEYPATH joins dictionary keys and\n"
        "      array indexes with \".\"; write \"\\.\" for a dot inside a key, \"\\\\\" for a\n"
        "      backslash. An empty KEYPATH is the whole value.\n"
        "  ardeck set FILE KEYPATH TYPE VALUE\n"
        "      Replaces the value at KEYPATH.\n"
        "  ardeck insert FILE KEYPATH TYPE VALUE\n"
        "      Adds a value: the last step of KEYPATH is a new key of a dictionary, or an\n"
        "      index of an array (the count appends).\n"
        "  ardeck remove FILE KEYPATH\n"
        "      Removes the value at KEYPATH.\n"
        "      TYPE is string, integer (decimal or 0x hexadecimal), real, bool (true,\n"
        "      false, YES, NO, 1 or 0), date (2026-11-22T10:00:00Z or\n"
        "      \"2026-11-22 10:00:00 +0000\"), data (hexadecimal), dict or array. For dict\n"
        "      and array, VALUE may be left out (empty) or be a property list text of\n"
        "      that type, such as '{\"a\": 1}'. Edits save in the file's own format and\n"
        "      keep every other value and key where it was; a bad value or path changes\n"
        "      nothing.\n"
        "\n"
        "Exit status: 0 on success, 1 when a file fails, 2 for a usage mistake.\n");
}
