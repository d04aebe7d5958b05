#pragma once

#include "KZNumberFormatter.h"

/// A count of bytes in the largest unit that fits: "1.5 KB", "2.0 GB",
/// "0 bytes"; negative counts show "--". `storageSizeMode` 1 (the default)
/// counts a kilobyte as 1000 bytes, 0 as 1024. The quotient goes through the
/// inherited number pattern, "#,##0.0;0;#,##0.0" unless set. Typed text takes
/// a unit (any case) or none, and its fraction is dropped before the unit
/// multiplies: "1.5 MB" is 1,000,000 bytes.
class KZStorageSizeFormatter : public KZNumberFormatter
{
    Q_OBJECT
    Q_PROPERTY(int storageSizeMode READ storageSizeMode WRITE setStorageSizeMode)
public:
    static constexpr int BinaryMode = 0;
    static constexpr int DecimalMode = 1;

    Q_INVOKABLE KZStorageSizeFormatter();

    int storageSizeMode() const { return _storageSizeMode; }
    void setStorageSizeMode(int mode) { _storageSizeMode = mode; }

    /// Through one shared formatter in decimal mode.
    static QString storageSizeStringForBytes(quint64 bytes);

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    std::optional<QString> editingStringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;

private:
    quint64 multiplier(int index) const;

    int _storageSizeMode = DecimalMode;
};
