#include "ADObjcLiteralWriter.h"

ADObjcLiteralWriter::ADObjcLiteralWriter(std::vector<PlistValue> plists)
    : ADLiteralWriter(
          std::move(plists),
          {QStringLiteral("@"), QStringLiteral("@YES"), QStringLiteral("@NO"), QStringLiteral("@("),
           QStringLiteral(")"), QStringLiteral("[NSDate dateWithTimeIntervalSinceReferenceDate:"),
           QStringLiteral("]"), QStringLiteral("[[NSData alloc] initWithBase64EncodedString:@\""),
           QStringLiteral("\" options:0]"), QStringLiteral("@["), QStringLiteral("]"),
           QStringLiteral("@{"), QStringLiteral("}")})
{}
