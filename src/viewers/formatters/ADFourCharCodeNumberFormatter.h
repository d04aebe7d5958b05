#pragma once

#include "KZFormatter.h"

/// A number as a four-character code ("abcd" for 0x61626364): the low four
/// bytes, most significant first, as Mac OS Roman characters. Typed codes
/// must be four characters that Mac OS Roman holds.
class ADFourCharCodeNumberFormatter : public KZFormatter
{
    Q_OBJECT
public:
    Q_INVOKABLE ADFourCharCodeNumberFormatter() = default;

    /// The four characters of a code.
    static QString stringWithOSType(quint32 type);

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;
    std::optional<KZStyledText>
    attributedStringForObjectValue(const PlistValue &value) const override;
};
