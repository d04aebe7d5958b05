#include "ADResourceValuesModel.h"

#include "shared/KZLocalizedString.h"

ADResourceValuesModel::ADResourceValuesModel(QObject *parent) : QAbstractTableModel(parent) {}

void ADResourceValuesModel::setRows(const Rows &rows)
{
    beginResetModel();
    _rows = rows;
    endResetModel();
}

int ADResourceValuesModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(_rows.size());
}

int ADResourceValuesModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 2;
}

QVariant ADResourceValuesModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= _rows.size() ||
        (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return QVariant();
    const QPair<QString, QString> &row = _rows[index.row()];
    return index.column() == 0 ? row.first : row.second;
}

QVariant ADResourceValuesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return section == 0 ? KZLocalizedStringWithID(4050, QStringLiteral("Key"))
                        : KZLocalizedStringWithID(4051, QStringLiteral("Value"));
}
