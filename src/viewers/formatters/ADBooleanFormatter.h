#pragma once

#include "KZFormatter.h"

/// Booleans as "YES" and "NO", typed exactly so (case matters). No label.
class ADBooleanFormatter : public KZFormatter
{
    Q_OBJECT
public:
    Q_INVOKABLE ADBooleanFormatter() = default;

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;
};
