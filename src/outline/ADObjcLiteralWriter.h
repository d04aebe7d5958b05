#pragma once

#include "ADLiteralWriter.h"

/// Plist values as an Objective-C literal, for "Copy as Objective-C Literal".
class ADObjcLiteralWriter : public ADLiteralWriter
{
public:
    explicit ADObjcLiteralWriter(std::vector<PlistValue> plists);

    QString objcLiteral() const { return literal(); }
};
