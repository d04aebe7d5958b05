#pragma once

#include "ADLiteralWriter.h"

/// Plist values as a Swift literal, for "Copy as Swift Literal".
class ADSwiftLiteralWriter : public ADLiteralWriter
{
public:
    explicit ADSwiftLiteralWriter(std::vector<PlistValue> plists);

    QString swiftLiteral() const { return literal(); }
};
