#pragma once

#include "ADDataFormatter.h"

/// Data that holds a binary property list: hexadecimal, labelled as such.
class ADBinaryPlistFormatter : public ADDataFormatter
{
    Q_OBJECT
public:
    Q_INVOKABLE ADBinaryPlistFormatter() = default;

    QString labelForData(QByteArrayView data) const override;
};
