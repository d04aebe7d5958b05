#pragma once

#include "shared/KZError.h"
#include "shared/PlistValue.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

/// A file that is a preference domain of another program: its values are
/// read and written through the preference system, not only the file, so that
/// the program that owns them sees the change. The preference domains layer
/// provides these; while it is absent no path is a domain. Main thread only.
class KZUserPreferences
{
public:
    virtual ~KZUserPreferences() = default;

    /// The domain's values, or none with `error` (may be null) set.
    virtual PlistValue readPropertyList(std::optional<KZError> *error) = 0;
    virtual std::optional<KZError> writePropertyList(const PlistValue &plist) = 0;
};

/// The domain a path stands for, or null.
using KZUserPreferencesLookup =
    std::function<std::shared_ptr<KZUserPreferences>(const QString &path)>;
