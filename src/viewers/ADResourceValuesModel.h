#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QPair>
#include <QString>

/// A flat table of named values as text, for the info panels of data
/// viewers: column 0 the key, column 1 the value, rows in the order given.
/// Main thread.
class ADResourceValuesModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    using Rows = QList<QPair<QString, QString>>;

    explicit ADResourceValuesModel(QObject *parent = nullptr);

    const Rows &rows() const { return _rows; }
    void setRows(const Rows &rows);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    Rows _rows;
};
