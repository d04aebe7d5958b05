#pragma once

#include <QtGlobal>

/// A size past which a reader takes another path: `normal`, or the much
/// smaller `whenFuzzing` in fuzzing builds, so that inputs of a few KB reach
/// that path too.
constexpr qsizetype sizeThreshold([[maybe_unused]] qsizetype normal,
                                  [[maybe_unused]] qsizetype whenFuzzing)
{
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
    return whenFuzzing;
#else
    return normal;
#endif
}
