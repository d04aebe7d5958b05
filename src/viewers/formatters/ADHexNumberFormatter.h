#pragma once

#include "KZHexNumberFormatter.h"

/// Hexadecimal numbers labelled with their byte order.
class ADHexNumberFormatter : public KZHexNumberFormatter
{
    Q_OBJECT
public:
    Q_INVOKABLE ADHexNumberFormatter() = default;

    std::optional<KZStyledText>
    attributedStringForObjectValue(const PlistValue &value) const override;
};
