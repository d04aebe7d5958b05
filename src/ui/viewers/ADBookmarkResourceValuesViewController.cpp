#include "ADBookmarkResourceValuesViewController.h"

#include "viewers/ADInfoPanelValues.h"
#include "viewers/ADValueViewerRegistry.h"

ADBookmarkResourceValuesViewController::ADBookmarkResourceValuesViewController(QWidget *parent)
    : ADInfoViewController(parent)
{
    setObjectName(QStringLiteral("ADBookmarkResourceValuesViewController"));
}

ADResourceValuesModel::Rows
ADBookmarkResourceValuesViewController::valuesForPlist(const PlistValue &plist) const
{
    return ADInfoPanelValues::bookmarkResourceValues(plist,
                                                     ADValueViewerRegistry::sharedRegistry());
}
