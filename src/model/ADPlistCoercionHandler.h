#pragma once

#include "shared/ADTypes.h"
#include "shared/PlistValue.h"

#include <array>
#include <functional>

/// Turns a plain value into a value of another plist type. A coercion never
/// fails: where the table has no conversion, or a conversion gives nothing,
/// the result is a copy of the target type's default. One shared handler;
/// main thread (its table may be changed).
class ADPlistCoercionHandler
{
public:
    using Handler = std::function<PlistValue(const PlistValue &)>;

    ADPlistCoercionHandler();
    static ADPlistCoercionHandler &sharedCoercionHandler();

    /// None for none; otherwise a value of `type`.
    PlistValue coercePlist(const PlistValue &plist, ADPlistType type) const;
    void setHandler(Handler handler, ADPlistType from, ADPlistType to);
    void removeHandler(ADPlistType from, ADPlistType to);

    static PlistValue coerceSameType(const PlistValue &plist);
    /// Keys "0", "1", ...; the values themselves, not copies.
    static PlistValue coerceArrayToDictionary(const PlistValue &plist);
    /// Values (copied) in the order of their keys; the keys are lost.
    static PlistValue coerceDictionaryToArray(const PlistValue &plist);
    /// Exactly "1" and "YES" are true.
    static PlistValue coerceStringToBool(const PlistValue &plist);
    /// The leading number; an integer unless the fraction (signed) is at least 1e-7.
    static PlistValue coerceStringToNumber(const PlistValue &plist);
    static PlistValue coerceStringToDate(const PlistValue &plist);
    static PlistValue coerceStringToData(const PlistValue &plist);
    static PlistValue coerceBoolToString(const PlistValue &plist);
    static PlistValue coerceBoolToNumber(const PlistValue &plist);
    /// Reals as "%f"; integers as "%d" of their low 32 bits.
    static PlistValue coerceNumberToString(const PlistValue &plist);
    static PlistValue coerceNumberToBool(const PlistValue &plist);
    static PlistValue coerceDateToString(const PlistValue &plist);
    static PlistValue coerceDataToString(const PlistValue &plist);

private:
    static constexpr size_t kTypes = 8;
    std::array<std::array<Handler, kTypes>, kTypes> _handlers;
    std::array<PlistValue, kTypes> _defaults;
};
