#pragma once

#include "KZFormatter.h"

/// Null shows "<null>". Typing "<null>" keeps it null; any other text
/// becomes a string, which is how a null is replaced by hand.
class ADNullFormatter : public KZFormatter
{
    Q_OBJECT
public:
    Q_INVOKABLE ADNullFormatter() = default;

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;
};
