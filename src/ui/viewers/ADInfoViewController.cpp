#include "ADInfoViewController.h"

#include "ADBinaryPlistViewController.h"
#include "ADBookmarkResourceValuesViewController.h"

#include "shared/KZClassRegistry.h"

#include <QHeaderView>
#include <QTableView>
#include <QVBoxLayout>

ADInfoViewController::ADInfoViewController(QWidget *parent)
    : QWidget(parent), _model(new ADResourceValuesModel(this)), _table(new QTableView(this)),
      _layout(new QVBoxLayout(this))
{
    _table->setModel(_model);
    _table->verticalHeader()->hide();
    _table->horizontalHeader()->setStretchLastSection(true);
    _table->setSelectionBehavior(QAbstractItemView::SelectRows);
    _table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    _table->setWordWrap(false);
    _layout->addWidget(_table);
}

void ADInfoViewController::registerClasses()
{
    KZClassRegistry::registerClass<ADBinaryPlistViewController>();
    KZClassRegistry::registerClass<ADBookmarkResourceValuesViewController>();
}

std::unique_ptr<ADInfoViewController>
ADInfoViewController::infoViewControllerWithClassName(const QString &className)
{
    registerClasses();
    std::unique_ptr<QObject> object = KZClassRegistry::newObjectOfClass(className);
    auto *controller = qobject_cast<ADInfoViewController *>(object.get());
    if (!controller)
        return nullptr;
    object.release();
    return std::unique_ptr<ADInfoViewController>(controller);
}

void ADInfoViewController::setRepresentedObject(const ADPlistObject::Pointer &object)
{
    _representedObject = object;
    _model->setRows(object ? valuesForPlist(object->plist()) : ADResourceValuesModel::Rows());
    _table->resizeColumnToContents(0);
}
