#pragma once

#include <QAnyStringView>

class PlistValue;

/// The comparisons that sort commands and preferences hand around by name.
enum class KZComparison
{
    Compare,                       // ordinal, by UTF-16 units
    CaseInsensitiveCompare,        // by case-folded units
    NumericCompare,                // runs of digits by their value
    NumericCaseInsensitiveCompare, // both of the above
    PlistCompare,                  // the plist ordering of values
};

/// The one place where a comparison is carried out; -1, 0 or 1.
int KZCompareStrings(KZComparison comparison, QAnyStringView a, QAnyStringView b);

/// Strings go to `KZCompareStrings`. Other values: `PlistCompare` uses the
/// plist ordering, the rest the values' own `compare`; a string comparison
/// with anything but a string gives 0.
int KZCompareValues(KZComparison comparison, const PlistValue &a, const PlistValue &b);
