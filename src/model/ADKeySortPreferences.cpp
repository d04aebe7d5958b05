#include "ADKeySortPreferences.h"

namespace {

ADKeySortPreferences::Provider &provider()
{
    static ADKeySortPreferences::Provider installed;
    return installed;
}

} // namespace

ADKeySortPreferences::Values ADKeySortPreferences::current()
{
    return provider() ? provider()() : Values{};
}

void ADKeySortPreferences::setProvider(Provider p)
{
    provider() = std::move(p);
}

KZComparison ADKeySortPreferences::selectorFor(const Values &v)
{
    if (v.sortCaseSensitive)
        return v.sortNumeric ? KZComparison::NumericCompare : KZComparison::Compare;
    return v.sortNumeric ? KZComparison::NumericCaseInsensitiveCompare
                         : KZComparison::CaseInsensitiveCompare;
}
