#include "ADBinaryPlistFormatter.h"

#include "shared/KZLocalizedString.h"

QString ADBinaryPlistFormatter::labelForData(QByteArrayView data) const
{
    return KZStringWithFormat(
        KZLocalizedStringWithID(338, QStringLiteral("Binary plist, %lu bytes: ")),
        {QString::number(data.size())});
}
