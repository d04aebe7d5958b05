#include "ADOutlineCellView.h"

#include "ADPlistOutlineView.h"

#include <QCompleter>
#include <QLineEdit>
#include <QMessageBox>
#include <QStringListModel>
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

QWidget *ADOutlineCellView::openedTextField(QWidget *parent, const QModelIndex &index) const
{
    auto *field = new QLineEdit(parent);
    field->setFrame(false);
    auto *words = new QStringListModel(field);
    auto *completer = new QCompleter(words, field);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    field->setCompleter(completer);
    connect(field, &QLineEdit::textEdited, field,
            [this, words, column = index.column(),
             item = ADPlistObject::Pointer(itemAt(index))](const QString &text) {
                if (item)
                    words->setStringList(controller().completions(text, column, *item));
            });
    return opened(field);
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
