#include "ArdeckTool.h"

#include "model/ArdeckKeyPath.h"

#include "model/ADKeySortPreferences.h"
#include "model/ADPlistObject.h"
#include "shared/KZDataAdditions.h"
#include "shared/KZError.h"
#include "shared/KZReferenceDate.h"
#include "shared/NumberText.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistSerialization.h"
#include "viewers/formatters/ADDateFormatter.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTimeZone>

#include <cmath>
#include <vector>

namespace {

ADPlistFormat formatForName(const QString &name)
{
    if (name == u"binary")
        return ADPlistFormatBinary;
    if (name == u"ascii")
        return ADPlistFormatASCII;
    if (name == u"json")
        return ADPlistFormatJSON;
    return ADPlistFormatXML;
}

// One line for a message that may span several.
QString oneLine(QString text)
{
    text.replace(QStringLiteral("\n\n"), QStringLiteral(" "));
    text.replace(u'\n', u' ');
    return text;
}

QString quoted(const QString &text)
{
    QString out = QStringLiteral("\"");
    for (const QChar c : text) {
        if (c == u'"' || c == u'\\')
            out += u'\\' + QString(c);
        else if (c == u'\n')
            out += QStringLiteral("\\n");
        else if (c == u'\t')
            out += QStringLiteral("\\t");
        else if (c.unicode() < 0x20)
            out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QChar(u'0'));
        else
            out += c;
    }
    return out + u'"';
}

QString isoDate(double secondsSinceReferenceDate)
{
    return KZReferenceDate::toDateTime(secondsSinceReferenceDate).toUTC().toString(Qt::ISODate);
}

// A scalar as `get` prints it: text for scripts, nothing decorated.
QString plainText(const PlistValue &v)
{
    switch (v.kind()) {
    case PlistValue::Kind::Boolean:
        return v.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case PlistValue::Kind::Date:
        return isoDate(v.toDate());
    case PlistValue::Kind::Data:
        return QString::fromLatin1(v.toData().toBase64());
    case PlistValue::Kind::Null:
        return QStringLiteral("null");
    default:
        return v.displayString();
    }
}

// A scalar as `print` shows it: strings quoted, data in hexadecimal.
QString shownText(const PlistValue &v)
{
    switch (v.kind()) {
    case PlistValue::Kind::String:
        return quoted(v.toString());
    case PlistValue::Kind::Data:
        return u'<' + hexString(v.toData()) + u'>';
    case PlistValue::Kind::Null:
        return QStringLiteral("null");
    default:
        return v.displayString();
    }
}

QString printLine(const PlistValue &value, const QString &label, qsizetype depth)
{
    const QString indent(depth * 4, u' ');
    const QString typeName = ADPlistObject::classNameForPlistType(value.plistType());
    if (value.isContainer()) {
        const qint64 n = value.containerCount();
        return QStringLiteral("%1%2: %3 (%4 %5)")
            .arg(indent, label, typeName)
            .arg(n)
            .arg(n == 1 ? QStringLiteral("item") : QStringLiteral("items"));
    }
    return QStringLiteral("%1%2: %3 = %4").arg(indent, label, typeName, shownText(value));
}

// The indented view of a whole value as a tree shows it, walked with an explicit stack.
QByteArray printedValue(const PlistValue &root)
{
    struct Item
    {
        PlistValue value;
        QString label;
        qsizetype depth;
    };
    std::vector<Item> stack{{ADPlistObject::shownValueForPlist(root), QStringLiteral("Root"), 0}};
    QByteArray out;
    while (!stack.empty()) {
        const Item item = std::move(stack.back());
        stack.pop_back();
        out += printLine(item.value, item.label, item.depth).toUtf8();
        out += '\n';
        for (qint64 i = item.value.containerCount() - 1; i >= 0; --i) {
            const QString label = item.value.isDictionary()
                                      ? item.value.containerKeyAt(i).toString()
                                      : QString::number(i);
            stack.push_back({ADPlistObject::shownValueForPlist(item.value.containerValueAt(i)),
                             label, item.depth + 1});
        }
    }
    return out;
}

// Why a value cannot be stored in a format. The hint to coerce goes only
// where the verb has the option.
QString misfitMessage(const ADPlistObject::Misfit &misfit, ADPlistFormat format, bool offerCoerce)
{
    const bool top = misfit.path.isEmpty();
    const QString where =
        top ? QStringLiteral("the top") : u'"' + ArdeckKeyPath::textOf(misfit.path) + u'"';
    return QStringLiteral("the %1 value at %2 cannot be stored as %3%4")
        .arg(ADPlistObject::classNameForPlistType(misfit.type), where,
             ADPlistObject::displayStringForPlistFormat(format),
             offerCoerce && !top ? QStringLiteral(" (--coerce turns it into a string)")
                                 : QString());
}

bool parseInteger(const QString &text, PlistValue *out)
{
    NumberText::Integer integer;
    if (NumberText::parseInteger(text.toUtf8(), NumberText::Hexadecimal, integer) !=
        NumberText::Status::Ok)
        return false;
    *out = integer.negative ? PlistValue(integer.toSigned()) : PlistValue(integer.magnitude);
    return true;
}

std::optional<bool> parseBool(const QString &text)
{
    if (text == u"true" || text == u"YES" || text == u"1")
        return true;
    if (text == u"false" || text == u"NO" || text == u"0")
        return false;
    return std::nullopt;
}

// The value an edit puts in, from the command line's TYPE and VALUE; none with `error` set when
// VALUE does not fit.
PlistValue typedValue(const ArdeckOptions &options, QString *error)
{
    const QString &type = options.type;
    const QString &text = options.value;
    PlistValue value;
    if (type == u"string") {
        value = PlistValue(text);
    } else if (type == u"integer") {
        if (!parseInteger(text.trimmed(), &value))
            *error = QStringLiteral("\"%1\" is not an integer").arg(text);
    } else if (type == u"real") {
        double d = 0;
        if (NumberText::parseReal(text.trimmed().toUtf8(), d) == NumberText::Status::Ok)
            value = PlistValue(d);
        else
            *error = QStringLiteral("\"%1\" is not a real number").arg(text);
    } else if (type == u"bool") {
        if (const std::optional<bool> b = parseBool(text.trimmed()))
            value = PlistValue(*b);
        else
            *error = QStringLiteral("\"%1\" is not a boolean (use true or false)").arg(text);
    } else if (type == u"date") {
        static const ADDateFormatter utc(QLocale::c(), QTimeZone::utc());
        if (const std::optional<double> seconds = utc.dateFromString(text))
            value = PlistValue::date(*seconds);
        else
            *error = QStringLiteral("\"%1\" is not a date (use 2026-11-22T10:00:00Z)").arg(text);
    } else if (type == u"data") {
        if (const std::optional<QByteArray> bytes = hexStringDataWithPadding(text, true))
            value = PlistValue::data(*bytes);
        else
            *error = QStringLiteral("\"%1\" is not hexadecimal data").arg(text);
    } else if (!options.hasValue || text.trimmed().isEmpty()) {
        value = type == u"dict" ? PlistValue(PlistDictionary::create())
                                : PlistValue(PlistArray::create());
    } else {
        std::optional<KZError> parseError;
        value = ADPlistObject::readPlistFromData(text.toUtf8(), QStringLiteral("VALUE"), nullptr,
                                                 &parseError);
        const bool fits = type == u"dict" ? value.isDictionary() : value.isArray();
        if (!fits) {
            *error =
                QStringLiteral("VALUE is not a property list %1")
                    .arg(type == u"dict" ? QStringLiteral("dictionary") : QStringLiteral("array"));
            value = PlistValue();
        }
    }
    return value;
}

} // namespace

ArdeckTool::ArdeckTool(ArdeckIO io) : _io(std::move(io))
{
    ADKeySortPreferences::setProvider([] {
        ADKeySortPreferences::Values values;
        values.keepKeyOrder = true;
        return values;
    });
}

int ArdeckTool::run(const ArdeckOptions &options)
{
    if (options.help) {
        _io.writeOutput(ArdeckOptions::usage().toUtf8());
        return 0;
    }
    if (!options.usageErrors.isEmpty()) {
        for (const QString &error : options.usageErrors)
            _io.writeError(QStringLiteral("ardeck: ") + error);
        _io.writeError(QStringLiteral("Try \"ardeck --help\"."));
        return 2;
    }
    if (options.verb == u"lint")
        return lint(options);
    if (options.verb == u"convert")
        return convert(options);
    if (options.verb == u"print")
        return print(options);
    if (options.verb == u"get")
        return get(options);
    return edit(options);
}

ArdeckTool::Loaded ArdeckTool::load(const QString &file) const
{
    Loaded loaded;
    // The reading entry sees no bytes in either case and says the data is empty.
    if (file != u"-" && !QFileInfo::exists(file)) {
        loaded.error = QStringLiteral("no such file");
        return loaded;
    }
    if (file != u"-" && !QFileInfo(file).isReadable()) {
        loaded.error = QStringLiteral("cannot be read (permission denied)");
        return loaded;
    }
    std::optional<KZError> error;
    if (file == u"-")
        loaded.value = ADPlistObject::readPlistFromData(_io.readInput(), QStringLiteral("-"),
                                                        &loaded.format, &error);
    else
        loaded.value = ADPlistObject::readPlistFromFile(file, false, &loaded.format, &error);
    if (loaded.value.isNone())
        loaded.error =
            error ? oneLine(error->localizedDescription()) : QStringLiteral("unreadable");
    return loaded;
}

void ArdeckTool::fail(const QString &file, const QString &message) const
{
    _io.writeError(file + QStringLiteral(": ") + message);
}

int ArdeckTool::lint(const ArdeckOptions &options)
{
    int status = 0;
    for (const QString &file : options.files) {
        const Loaded loaded = load(file);
        if (loaded.value.isNone()) {
            _io.writeOutput((file + QStringLiteral(": ") + loaded.error + u'\n').toUtf8());
            status = 1;
            continue;
        }
        _io.writeOutput((file + QStringLiteral(": OK\n")).toUtf8());
    }
    return status;
}

bool ArdeckTool::writeValue(const QString &file, const PlistValue &value, ADPlistFormat format,
                            bool humanReadable, const QString &target)
{
    if (target == u"-") {
        const WriteResult written = PlistSerialization::write(value, format, humanReadable);
        if (!written) {
            fail(file, QStringLiteral("cannot be written as %1: %2")
                           .arg(ADPlistObject::displayStringForPlistFormat(format), written.error));
            return false;
        }
        _io.writeOutput(written.data);
        return true;
    }
    if (const auto error = ADPlistObject::writePlist(value, target, format, humanReadable)) {
        fail(file, QStringLiteral("cannot be written as %1: %2")
                       .arg(ADPlistObject::displayStringForPlistFormat(format),
                            error->localizedDescription()));
        return false;
    }
    return true;
}

bool ArdeckTool::fitsFormat(const QString &file, ADPlistObject &root, ADPlistFormat format,
                            bool coerce) const
{
    if (coerce && !root.makeCompatibleWithPlistFormat(format)) {
        fail(file,
             QStringLiteral("a %1 file needs a dictionary or an array at the top, not a %2")
                 .arg(ADPlistObject::displayStringForPlistFormat(format), root.plistTypeName()));
        return false;
    }
    // Each value is tested at its own place: JSON's narrow mask is for the top only.
    const ADPlistObject *misfit = root.firstIncompatibleObjectForFormat(format);
    if (!misfit)
        return true;
    fail(file, misfitMessage({misfit->path(), misfit->plistType()}, format, false));
    return false;
}

int ArdeckTool::convert(const ArdeckOptions &options)
{
    const ADPlistFormat format = formatForName(options.format);
    int status = 0;
    for (const QString &file : options.files) {
        const Loaded loaded = load(file);
        if (loaded.value.isNone()) {
            fail(file, loaded.error);
            status = 1;
            continue;
        }
        const QString target = !options.output.isEmpty()
                                   ? options.output
                                   : (file == u"-" ? QStringLiteral("-") : file);
        if (!convertedValue(file, loaded.value, format, options.coerce, target,
                            options.humanReadable))
            status = 1;
    }
    return status;
}

// Without coercion nothing changes, so no tree is built: the value read (with
// an archiver UID at the top as it came) is checked and written as it is.
bool ArdeckTool::convertedValue(const QString &file, const PlistValue &value, ADPlistFormat format,
                                bool coerce, const QString &target, bool humanReadable)
{
    if (!coerce) {
        if (const auto misfit = ADPlistObject::firstIncompatibleValueForFormat(value, format)) {
            fail(file, misfitMessage(*misfit, format, true));
            return false;
        }
        return writeValue(file, value, format, humanReadable, target);
    }
    const auto root = ADPlistObject::createWithPlist(value);
    return fitsFormat(file, *root, format, true) &&
           writeValue(file, root->plist(), format, humanReadable, target);
}

int ArdeckTool::print(const ArdeckOptions &options)
{
    const QString &file = options.files.first();
    const Loaded loaded = load(file);
    if (loaded.value.isNone()) {
        fail(file, loaded.error);
        return 1;
    }
    _io.writeOutput(printedValue(loaded.value));
    return 0;
}

int ArdeckTool::get(const ArdeckOptions &options)
{
    const QString &file = options.files.first();
    const Loaded loaded = load(file);
    if (loaded.value.isNone()) {
        fail(file, loaded.error);
        return 1;
    }
    QString error;
    const PlistValue value = ArdeckKeyPath(options.keyPath).resolve(loaded.value, &error);
    if (value.isNone()) {
        fail(file, error);
        return 1;
    }
    if (!value.isContainer()) {
        _io.writeOutput((plainText(value) + u'\n').toUtf8());
        return 0;
    }
    return writeValue(file, value, formatForName(options.format), true, QStringLiteral("-")) ? 0
                                                                                             : 1;
}

int ArdeckTool::edit(const ArdeckOptions &options)
{
    const QString &file = options.files.first();
    const Loaded loaded = load(file);
    if (loaded.value.isNone()) {
        fail(file, loaded.error);
        return 1;
    }
    QString error;
    const PlistValue value = options.verb == u"remove" ? PlistValue() : typedValue(options, &error);
    if (!error.isEmpty()) {
        fail(file, error);
        return 1;
    }
    const auto root = ADPlistObject::createWithPlist(loaded.value);
    const ArdeckKeyPath path(options.keyPath);
    if (options.verb == u"set") {
        ADPlistObject *node = path.resolve(root.get(), &error);
        if (!node) {
            fail(file, error);
            return 1;
        }
        node->setPlist(value);
    } else {
        if (path.isEmpty()) {
            fail(file, QStringLiteral("%1 needs a key path below the top").arg(options.verb));
            return 1;
        }
        ADPlistObject *parent = path.parent().resolve(root.get(), &error);
        if (!parent) {
            fail(file, error);
            return 1;
        }
        const QString &last = path.steps().constLast();
        const QString where = path.parent().isEmpty()
                                  ? QStringLiteral("the top")
                                  : u'"' + ArdeckKeyPath::textOf(parent->path()) + u'"';
        if (parent->hasKeys()) {
            const bool present = parent->childForKey(last) != nullptr;
            if (options.verb == u"insert" && present) {
                fail(file, QStringLiteral("%1 already has \"%2\" (use set to replace it)")
                               .arg(where, last));
                return 1;
            }
            if (options.verb == u"remove" && !present) {
                fail(file, QStringLiteral("%1 has no \"%2\"").arg(where, last));
                return 1;
            }
            if (options.verb == u"insert")
                parent->addChild(
                    ADPlistObject::createWithPlist(value.kz_copyMutableContainers(), parent), last);
            else
                parent->removeChildAtIndex(parent->indexOfKey(last));
        } else if (parent->plistType() == ADPlistTypeArray) {
            bool isIndex = false;
            const qint64 index = last.toLongLong(&isIndex);
            const qint64 limit = parent->childCount() + (options.verb == u"insert" ? 1 : 0);
            if (!isIndex || index < 0 || index >= limit) {
                fail(file, QStringLiteral("\"%1\" is no index from 0 to %2 in %3")
                               .arg(last)
                               .arg(limit - 1)
                               .arg(where));
                return 1;
            }
            if (options.verb == u"insert")
                parent->insertChild(
                    ADPlistObject::createWithPlist(value.kz_copyMutableContainers(), parent),
                    index);
            else
                parent->removeChildAtIndex(index);
        } else {
            fail(file, QStringLiteral("%1 is a %2, which holds no values")
                           .arg(where, parent->plistTypeName()));
            return 1;
        }
    }
    const ADPlistFormat format =
        loaded.format == ADPlistFormatUnknown ? ADPlistFormatXML : loaded.format;
    if (!fitsFormat(file, *root, format, false))
        return 1;
    return writeValue(file, root->plist(), format, true, file == u"-" ? QStringLiteral("-") : file)
               ? 0
               : 1;
}
