#pragma once

#include "KZStorageSizeFormatter.h"

/// Storage sizes labelled "Storage Size: ".
class ADStorageSizeFormatter : public KZStorageSizeFormatter
{
    Q_OBJECT
public:
    Q_INVOKABLE ADStorageSizeFormatter() = default;

    std::optional<KZStyledText>
    attributedStringForObjectValue(const PlistValue &value) const override;
};
