#include "ADOutlineCellView.h"

#include "ADPlistOutlineView.h"

#include <QMessageBox>
#include <QTimer>

ADOutlineCellView::ADOutlineCellView(ADPlistOutlineView &view)
    : QStyledItemDelegate(&view), _view(view)
{}

ADPlistOutlineController &ADOutlineCellView::controller() const
{
    return _view.controller();
}

ADPlistObject *ADOutlineCellView::itemAt(const QModelIndex &index)
{
    return ADPlistOutlineModel::itemForIndex(index);
}

QWidget *ADOutlineCellView::opened(QWidget *editor) const
{
    _openEditor = editor;
    _commitTaken = true;
    return editor;
}

bool ADOutlineCellView::commitOpenEditor()
{
    if (!_openEditor)
        return true;
    QWidget *editor = _openEditor;
    emit commitData(editor);
    const bool taken = _commitTaken;
    if (taken)
        emit closeEditor(editor, NoHint);
    return taken;
}

void ADOutlineCellView::abortOpenEditor()
{
    if (_openEditor)
        emit closeEditor(_openEditor, RevertModelCache);
}

void ADOutlineCellView::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    if (editor == _openEditor)
        _openEditor = nullptr;
    QStyledItemDelegate::destroyEditor(editor, index);
}

void ADOutlineCellView::initStyleOption(QStyleOptionViewItem *option,
                                        const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (_font != QFont())
        option->font = _font;
}

void ADOutlineCellView::afterEditing(std::function<void()> step) const
{
    QTimer::singleShot(0, &_view, std::move(step));
}

void ADOutlineCellView::showAlertLater(const QString &title, const QString &text) const
{
    afterEditing([&view = _view, title, text] {
        QMessageBox alert(QMessageBox::Warning, title, text, QMessageBox::Ok, &view);
        alert.setWindowModality(Qt::WindowModal);
        alert.exec();
    });
}
