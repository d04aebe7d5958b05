#pragma once

#include "KZFormatter.h"

/// Integers in hexadecimal, "0x" and upper-case digits, whole bytes. With
/// `byteOrder` 2 (big-endian) the most significant byte comes first; with 1
/// (little-endian) the bytes are reversed, as the number lies in memory.
/// Negative integers show their 64-bit two's complement; a real with a
/// fraction, which hexadecimal cannot show, shows in decimal.
///
/// Typed text may drop the "0x", use either case, hold blanks between bytes
/// and lead with "-". Sixteen digits with the top bit set read as a negative
/// integer, so that what a negative integer shows reads back as itself.
class KZHexNumberFormatter : public KZFormatter
{
    Q_OBJECT
    Q_PROPERTY(int byteOrder READ byteOrder WRITE setByteOrder)
public:
    static constexpr int LittleEndian = 1;
    static constexpr int BigEndian = 2;

    Q_INVOKABLE KZHexNumberFormatter() = default;

    int byteOrder() const { return _byteOrder; }
    void setByteOrder(int byteOrder) { _byteOrder = byteOrder; }

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;

private:
    int _byteOrder = BigEndian;
};
