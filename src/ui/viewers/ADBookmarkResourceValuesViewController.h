#pragma once

#include "ADInfoViewController.h"

/// Lists the resource values a bookmark stores: path, name, dates, flags and
/// volume, each shown by its type's default viewer.
class ADBookmarkResourceValuesViewController : public ADInfoViewController
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit ADBookmarkResourceValuesViewController(QWidget *parent = nullptr);

protected:
    ADResourceValuesModel::Rows valuesForPlist(const PlistValue &plist) const override;
};
