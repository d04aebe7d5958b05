#pragma once

#include "ADInfoViewController.h"

class QPushButton;

/// Lists the top level of a property list embedded in data, and opens it
/// as a document of its own on request.
class ADBinaryPlistViewController : public ADInfoViewController
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit ADBinaryPlistViewController(QWidget *parent = nullptr);

    QPushButton *openAsDocumentButton() const { return _openButton; }

public slots:
    void openAsDocument();

signals:
    /// The embedded property list's bytes, for the document controller to open.
    void openAsDocumentRequested(const QByteArray &plistData);

protected:
    ADResourceValuesModel::Rows valuesForPlist(const PlistValue &plist) const override;

private:
    QPushButton *_openButton;
};
