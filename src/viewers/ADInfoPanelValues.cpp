#include "ADInfoPanelValues.h"

#include "ADValueViewerRegistry.h"

#include "model/ADPlistObject.h"
#include "shared/KZError.h"
#include "shared/KZLocalizedString.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "viewers/formatters/KZBookmarkData.h"

namespace {

std::optional<QString> displayStringForValue(const PlistValue &value,
                                             ADValueViewerRegistry &registry)
{
    const ADValueViewerRegistry::Viewer viewer = registry.defaultViewerForType(value.plistType());
    return viewer ? viewer->displayStringForPlist(value) : std::nullopt;
}

} // namespace

ADResourceValuesModel::Rows
ADInfoPanelValues::bookmarkResourceValues(const PlistValue &data, ADValueViewerRegistry &registry)
{
    ADResourceValuesModel::Rows rows;
    if (data.kind() != PlistValue::Kind::Data)
        return rows;
    const KZBookmarkData bookmark(data.toData());
    for (const auto &[key, value] : bookmark.resourceValues())
        rows.append({key, displayStringForValue(value, registry).value_or(QString())});
    return rows;
}

ADResourceValuesModel::Rows ADInfoPanelValues::binaryPlistValues(const PlistValue &data,
                                                                 ADValueViewerRegistry &registry)
{
    ADResourceValuesModel::Rows rows;
    const PlistValue plist =
        data.kind() == PlistValue::Kind::Data
            ? ADPlistObject::readPlistFromData(data.toData(), QString(), nullptr, nullptr)
            : PlistValue();
    if (plist.isDictionary()) {
        const PlistDictionary dictionary = plist.toDictionary();
        for (qsizetype i = 0; i < dictionary.count(); ++i)
            rows.append(
                {dictionary.keyAt(i),
                 displayStringForValue(dictionary.valueAt(i), registry).value_or(QString())});
        return rows;
    }
    if (plist.isArray()) {
        const PlistArray array = plist.toArray();
        for (qsizetype i = 0; i < array.count(); ++i)
            rows.append({QString::number(i), array.at(i).displayString()});
        return rows;
    }
    rows.append({QStringLiteral("value"),
                 displayStringForValue(plist, registry)
                     .value_or(KZLocalizedStringWithID(
                         4052, QStringLiteral("(could not create display string)")))});
    return rows;
}
