#pragma once

#include "ADResourceValuesModel.h"

#include "shared/PlistValue.h"

class ADValueViewerRegistry;

/// What the info panels of data viewers list, as text: each value shown by
/// the default viewer of its type in `registry`. Stateless; main thread.
class ADInfoPanelValues
{
public:
    /// The resource values a bookmark stores, in the platform's key order;
    /// nothing for data that is no bookmark.
    static ADResourceValuesModel::Rows bookmarkResourceValues(const PlistValue &data,
                                                              ADValueViewerRegistry &registry);
    /// An embedded property list flattened one level: a dictionary's keys
    /// with their values' display strings, an array's indexes with each
    /// element's own text, anything else as one row "value".
    static ADResourceValuesModel::Rows binaryPlistValues(const PlistValue &data,
                                                         ADValueViewerRegistry &registry);
};
