#include "ADSwiftLiteralWriter.h"

ADSwiftLiteralWriter::ADSwiftLiteralWriter(std::vector<PlistValue> plists)
    : ADLiteralWriter(std::move(plists),
                      {QString(), QStringLiteral("true"), QStringLiteral("false"), QString(),
                       QString(), QStringLiteral("NSDate(timeIntervalSinceReferenceDate: "),
                       QStringLiteral(")"), QStringLiteral("NSData(base64EncodedString: \""),
                       QStringLiteral("\", options: [])!"), QStringLiteral("["),
                       QStringLiteral("]"), QStringLiteral("["), QStringLiteral("]")})
{}
