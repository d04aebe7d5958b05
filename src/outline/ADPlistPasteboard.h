#pragma once

#include "shared/PlistValue.h"

#include <memory>
#include <optional>

class QMimeData;

/// The MIME type under which property lists travel: XML plist bytes.
inline const QString PlistObjectsPboardType = QStringLiteral("application/x-plist");

/// Where copied plist values travel. The general pasteboard is the system
/// clipboard: the property list as XML plist bytes, and its XML text as
/// plain text for other programs. The private pasteboard
/// ("PrivatePlistPboard") stays inside the program, so that duplicating
/// leaves the user's clipboard alone. Main thread only.
class ADPlistPasteboard
{
public:
    virtual ~ADPlistPasteboard() = default;

    static ADPlistPasteboard &general();
    static ADPlistPasteboard &privatePasteboard();

    /// Replaces what the pasteboard holds with `list` (an array or dictionary).
    virtual void writePropertyList(const PlistValue &list) = 0;
    /// The property list on the pasteboard: ours, or plist text another
    /// program put there; none when there is neither.
    virtual std::optional<PlistValue> propertyList() const = 0;

    /// The forms `list` takes on the clipboard and in a drag.
    static std::unique_ptr<QMimeData> mimeDataForPropertyList(const PlistValue &list);
    /// The property list in `data`: our type first, then text that reads as a plist.
    static std::optional<PlistValue> propertyListFromMimeData(const QMimeData *data);
};
