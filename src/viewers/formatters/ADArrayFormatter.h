#pragma once

#include "ADCollectionFormatter.h"

/// What the value column shows for an array: "3 ordered objects", in the
/// disabled colour and the outline's font. Arrays are not typed in.
class ADArrayFormatter : public ADCollectionFormatter
{
    Q_OBJECT
public:
    Q_INVOKABLE ADArrayFormatter();

    QString stringForArray(const PlistValue &array) const;

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;

private:
    QString _countFormat; // the text, looked up once
};
