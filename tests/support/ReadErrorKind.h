#pragma once

#include "storage/StorageResult.h"

#include <ostream>

// Shows an error kind by its number (see ReadError::Kind) when an assertion fails.
inline void PrintTo(ReadError::Kind kind, std::ostream *out)
{
    *out << "ReadError::Kind(" << int(kind) << ')';
}
