#pragma once

#include "KZFormatter.h"

/// What the value column shows for a container: a summary that subclasses
/// write, styled in the disabled colour and the outline's font. Containers
/// are not typed in: parsing always fails, with no message.
class ADCollectionFormatter : public KZFormatter
{
    Q_OBJECT
public:
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;
    std::optional<KZStyledText>
    attributedStringForObjectValue(const PlistValue &value) const override;

protected:
    ADCollectionFormatter() = default;
};
