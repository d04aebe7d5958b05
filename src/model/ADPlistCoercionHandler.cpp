#include "ADPlistCoercionHandler.h"

#include "shared/KZComparison.h"
#include "shared/KZDataAdditions.h"
#include "shared/KZReferenceDate.h"
#include "shared/NumberText.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "viewers/formatters/ADDateFormatter.h"

#include <QDateTime>

#include <algorithm>
#include <climits>
#include <numeric>

namespace {

bool validType(ADPlistType type)
{
    return type >= ADPlistTypeArray && type <= ADPlistTypeNull;
}

// A scanner's view of the text: leading white space skipped, then the
// longest decimal number, the same in every locale.
std::optional<double> scanDouble(const QByteArray &text)
{
    return NumberText::scanReal(text);
}

std::optional<int> scanInt(const QByteArray &text)
{
    const std::optional<qint64> v = NumberText::scanInteger(text);
    if (!v)
        return std::nullopt;
    return int(std::clamp<qint64>(*v, INT_MIN, INT_MAX)); // a scanner saturates
}

} // namespace

ADPlistCoercionHandler::ADPlistCoercionHandler()
{
    _defaults = {PlistArray::create(),           PlistValue(false),
                 PlistValue::data(QByteArray()), PlistValue::date(KZReferenceDate::now()),
                 PlistDictionary::create(),      PlistValue(0),
                 PlistValue(QString()),          PlistValue::null()};
    for (size_t t = 0; t < kTypes; ++t)
        _handlers[t][t] = coerceSameType;
    auto set = [this](ADPlistType from, ADPlistType to, Handler handler) {
        setHandler(std::move(handler), from, to);
    };
    set(ADPlistTypeArray, ADPlistTypeDictionary, coerceArrayToDictionary);
    set(ADPlistTypeDictionary, ADPlistTypeArray, coerceDictionaryToArray);
    set(ADPlistTypeString, ADPlistTypeBoolean, coerceStringToBool);
    set(ADPlistTypeString, ADPlistTypeNumber, coerceStringToNumber);
    set(ADPlistTypeString, ADPlistTypeDate, coerceStringToDate);
    set(ADPlistTypeString, ADPlistTypeData, coerceStringToData);
    set(ADPlistTypeBoolean, ADPlistTypeString, coerceBoolToString);
    set(ADPlistTypeBoolean, ADPlistTypeNumber, coerceBoolToNumber);
    set(ADPlistTypeNumber, ADPlistTypeString, coerceNumberToString);
    set(ADPlistTypeNumber, ADPlistTypeBoolean, coerceNumberToBool);
    set(ADPlistTypeDate, ADPlistTypeString, coerceDateToString);
    set(ADPlistTypeData, ADPlistTypeString, coerceDataToString);
}

ADPlistCoercionHandler &ADPlistCoercionHandler::sharedCoercionHandler()
{
    static ADPlistCoercionHandler handler;
    return handler;
}

PlistValue ADPlistCoercionHandler::coercePlist(const PlistValue &plist, ADPlistType type) const
{
    if (plist.isNone() || !validType(type))
        return PlistValue();
    const ADPlistType from = plist.plistType();
    if (validType(from)) {
        if (const Handler &handler = _handlers[size_t(from)][size_t(type)]) {
            PlistValue result = handler(plist);
            if (!result.isNone())
                return result;
        }
    }
    return _defaults[size_t(type)].kz_copyMutableContainers();
}

void ADPlistCoercionHandler::setHandler(Handler handler, ADPlistType from, ADPlistType to)
{
    Q_ASSERT(validType(from) && validType(to));
    _handlers[size_t(from)][size_t(to)] = std::move(handler);
}

void ADPlistCoercionHandler::removeHandler(ADPlistType from, ADPlistType to)
{
    setHandler({}, from, to);
}

PlistValue ADPlistCoercionHandler::coerceSameType(const PlistValue &plist)
{
    return plist.kz_copyMutableContainers();
}

PlistValue ADPlistCoercionHandler::coerceArrayToDictionary(const PlistValue &plist)
{
    const PlistArray array = plist.toArray();
    PlistDictionary dictionary = PlistDictionary::create(array.count());
    for (qsizetype i = 0; i < array.count(); ++i)
        dictionary.insert(QString::number(i), array.at(i));
    return dictionary;
}

PlistValue ADPlistCoercionHandler::coerceDictionaryToArray(const PlistValue &plist)
{
    const PlistDictionary dictionary = plist.toDictionary();
    std::vector<qsizetype> order(size_t(dictionary.count()));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](qsizetype a, qsizetype b) {
        return KZCompareStrings(KZComparison::Compare, dictionary.keyValueAt(a).stringView(),
                                dictionary.keyValueAt(b).stringView()) < 0;
    });
    PlistArray array = PlistArray::create(dictionary.count());
    for (const qsizetype i : order)
        array.append(dictionary.valueAt(i).kz_copyMutableContainers());
    return array;
}

PlistValue ADPlistCoercionHandler::coerceStringToBool(const PlistValue &plist)
{
    const QString text = plist.toString();
    return PlistValue(text == u"1" || text == u"YES");
}

PlistValue ADPlistCoercionHandler::coerceStringToNumber(const PlistValue &plist)
{
    const QByteArray text = plist.toString().toUtf8();
    const std::optional<double> real = scanDouble(text);
    const std::optional<int> integer = scanInt(text);
    if (!real || !integer)
        return PlistValue();
    // Signed on purpose: a negative number loses its fraction.
    if (*real - double(*integer) < 0.0000001)
        return PlistValue(*integer);
    return PlistValue(*real);
}

PlistValue ADPlistCoercionHandler::coerceStringToDate(const PlistValue &plist)
{
    const std::optional<double> date =
        ADDateFormatter::standardDateFormatter().dateFromString(plist.toString());
    return PlistValue::date(date ? *date : KZReferenceDate::now());
}

PlistValue ADPlistCoercionHandler::coerceStringToData(const PlistValue &plist)
{
    const std::optional<QByteArray> bytes = hexStringData(plist.toString());
    return PlistValue::data(bytes.value_or(QByteArray()));
}

PlistValue ADPlistCoercionHandler::coerceBoolToString(const PlistValue &plist)
{
    return PlistValue(plist.toBool() ? QStringLiteral("YES") : QStringLiteral("NO"));
}

PlistValue ADPlistCoercionHandler::coerceBoolToNumber(const PlistValue &plist)
{
    return PlistValue(plist.toBool() ? 1 : 0);
}

PlistValue ADPlistCoercionHandler::coerceNumberToString(const PlistValue &plist)
{
    if (plist.isReal())
        return PlistValue(QString::asprintf("%f", plist.toReal()));
    return PlistValue(
        QString::number(qint32(plist.toUnsigned()))); // the low 32 bits, as intValue gives
}

PlistValue ADPlistCoercionHandler::coerceNumberToBool(const PlistValue &plist)
{
    return PlistValue(plist.toBool());
}

PlistValue ADPlistCoercionHandler::coerceDateToString(const PlistValue &plist)
{
    return PlistValue(ADDateFormatter::standardDateFormatter().stringFromDate(plist.toDate()));
}

PlistValue ADPlistCoercionHandler::coerceDataToString(const PlistValue &plist)
{
    return PlistValue(hexString(plist.toData()));
}
