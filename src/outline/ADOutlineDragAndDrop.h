#pragma once

#include <QtCore/qnamespace.h>

#include <memory>
#include <vector>

class ADPlistObject;
class QMimeData;

/// Who decides what an outline's rows carry when dragged and what a drop
/// does: the outline controller. The item model asks it. Main thread only.
class ADOutlineDragAndDrop
{
public:
    virtual ~ADOutlineDragAndDrop() = default;

    virtual std::unique_ptr<QMimeData>
    mimeDataForItems(const std::vector<ADPlistObject *> &items) = 0;
    /// Whether `data` may go into `parent` at `index` (-1: at its end).
    virtual bool validateDrop(const QMimeData *data, ADPlistObject *parent, qint64 index) const = 0;
    /// Moves or copies what `data` holds into `parent` at `index`; false when nothing was taken.
    virtual bool acceptDrop(const QMimeData *data, Qt::DropAction action, ADPlistObject *parent,
                            qint64 index) = 0;
};
