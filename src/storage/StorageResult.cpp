#include "StorageResult.h"

QString ReadError::description() const
{
    if (line >= 0 && column >= 0)
        return QStringLiteral("line %1, column %2: %3").arg(line).arg(column).arg(message);
    if (line >= 0)
        return QStringLiteral("line %1: %2").arg(line).arg(message);
    if (offset >= 0)
        return QStringLiteral("byte %1: %2").arg(offset).arg(message);
    return message;
}
