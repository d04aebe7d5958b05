#include "ADBinaryPlistViewController.h"

#include "viewers/ADInfoPanelValues.h"
#include "viewers/ADValueViewerRegistry.h"

#include "shared/KZLocalizedString.h"

#include <QPushButton>
#include <QVBoxLayout>

ADBinaryPlistViewController::ADBinaryPlistViewController(QWidget *parent)
    : ADInfoViewController(parent),
      _openButton(
          new QPushButton(KZLocalizedStringWithID(4053, QStringLiteral("Open as Document")), this))
{
    setObjectName(QStringLiteral("ADBinaryPlistViewController"));
    layout()->addWidget(_openButton, 0, Qt::AlignRight);
    connect(_openButton, &QPushButton::clicked, this, &ADBinaryPlistViewController::openAsDocument);
}

void ADBinaryPlistViewController::openAsDocument()
{
    if (representedObject() && representedObject()->plist().kind() == PlistValue::Kind::Data)
        emit openAsDocumentRequested(representedObject()->plist().toData());
}

ADResourceValuesModel::Rows
ADBinaryPlistViewController::valuesForPlist(const PlistValue &plist) const
{
    return ADInfoPanelValues::binaryPlistValues(plist, ADValueViewerRegistry::sharedRegistry());
}
