#pragma once

#include "model/ADPlistObject.h"
#include "viewers/ADResourceValuesModel.h"

#include <QWidget>

class QTableView;
class QVBoxLayout;

/// The panel an info button of a data cell opens: a table of keys and
/// values that describe the node's data. Subclasses say what the values
/// are; the node is held, so the panel can outlive a change of the tree.
class ADInfoViewController : public QWidget
{
    Q_OBJECT
public:
    /// Makes the panel a viewer names by class; null for a name nobody registered.
    static std::unique_ptr<ADInfoViewController>
    infoViewControllerWithClassName(const QString &className);
    /// Enters the panel classes in KZClassRegistry.
    static void registerClasses();

    const ADPlistObject::Pointer &representedObject() const { return _representedObject; }
    void setRepresentedObject(const ADPlistObject::Pointer &object);
    const ADResourceValuesModel::Rows &resourceValues() const { return _model->rows(); }

protected:
    explicit ADInfoViewController(QWidget *parent = nullptr);
    virtual ADResourceValuesModel::Rows valuesForPlist(const PlistValue &plist) const = 0;
    QVBoxLayout *layout() const { return _layout; }

private:
    ADPlistObject::Pointer _representedObject;
    ADResourceValuesModel *_model;
    QTableView *_table;
    QVBoxLayout *_layout;
};
