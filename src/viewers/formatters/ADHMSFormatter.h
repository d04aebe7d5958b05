#pragma once

#include "KZHMSFormatter.h"

/// Hours, minutes and seconds, labelled "HMS: ".
class ADHMSFormatter : public KZHMSFormatter
{
    Q_OBJECT
public:
    Q_INVOKABLE ADHMSFormatter() = default;

    std::optional<KZStyledText>
    attributedStringForObjectValue(const PlistValue &value) const override;
};
