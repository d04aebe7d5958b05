#include "ADUndoManager.h"

#include "shared/KZNotificationCenter.h"

#include <QTimer>
#include <QUndoCommand>
#include <QUndoStack>

#include <vector>

/// One top-level group. `_forward` holds what the next step in its direction
/// runs: the undo actions while it stands on the undo side, the redo actions
/// after it was undone.
class ADUndoManager::Command : public QUndoCommand
{
public:
    explicit Command(ADUndoManager &manager) : _manager(manager) {}
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;

    void add(ADUndoManager::Action action) { _collected.push_back(std::move(action)); }

    void undo() override { replay(true); }
    void redo() override
    {
        if (_pushing) { // QUndoStack redoes what it is given; this group is already done
            _pushing = false;
            return;
        }
        replay(false);
    }
    void finishBuilding()
    {
        _forward.swap(_collected);
        _collected.clear();
    }

private:
    void replay(bool undoing)
    {
        std::vector<ADUndoManager::Action> actions;
        actions.swap(_forward);
        (undoing ? _manager._undoing : _manager._redoing) = true;
        _manager._replaying = this;
        for (auto it = actions.rbegin(); it != actions.rend(); ++it)
            (*it)();
        _manager.postWillClose();
        _manager._replaying = nullptr;
        (undoing ? _manager._undoing : _manager._redoing) = false;
        finishBuilding();
    }

    ADUndoManager &_manager;
    std::vector<ADUndoManager::Action> _forward;
    std::vector<ADUndoManager::Action> _collected;
    bool _pushing = true;
};

ADUndoManager::ADUndoManager(QObject *parent)
    : QObject(parent), _stack(std::make_unique<QUndoStack>()),
      _center(&KZNotificationCenter::defaultCenter())
{}

ADUndoManager::~ADUndoManager() = default;

QUndoStack *ADUndoManager::undoStack() const
{
    return _stack.get();
}

void ADUndoManager::setNotificationCenter(KZNotificationCenter *center)
{
    _center = center;
}

void ADUndoManager::registerUndo(const void *target, Action action)
{
    _lastUndoTarget = target;
    if (!isUndoRegistrationEnabled())
        return;
    if (_replaying) {
        _replaying->add(std::move(action));
        return;
    }
    if (_level == 0 && _groupsByEvent) {
        beginUndoGrouping();
        _eventGroupOpen = true;
        QTimer::singleShot(0, this, &ADUndoManager::closeEventGroup);
    }
    if (_level == 0)
        return; // no group to hold it, as with any undo manager told not to group by event
    if (!_building) {
        // Pushing now drops what could be redone, as any new edit must.
        auto command = std::make_unique<Command>(*this);
        command->setText(std::exchange(_pendingName, QString()));
        _building = command.get();
        _stack->push(command.release());
    }
    _building->add(std::move(action));
}

void ADUndoManager::beginUndoGrouping()
{
    ++_level;
}

void ADUndoManager::endUndoGrouping()
{
    Q_ASSERT(_level > 0);
    if (_level == 1)
        postWillClose(); // observers may still register into this group
    if (--_level > 0)
        return;
    _eventGroupOpen = false;
    _pendingName.clear();
    if (Command *built = std::exchange(_building, nullptr))
        built->finishBuilding();
}

void ADUndoManager::closeEventGroup()
{
    if (_eventGroupOpen && _level == 1)
        endUndoGrouping();
}

void ADUndoManager::postWillClose()
{
    if (_center)
        _center->postNotification(ADUndoManagerWillCloseUndoGroupNotification, this);
}

bool ADUndoManager::canUndo() const
{
    return _stack->canUndo();
}

bool ADUndoManager::canRedo() const
{
    return _stack->canRedo();
}

void ADUndoManager::undo()
{
    if (_level == 1)
        endUndoGrouping();
    Q_ASSERT(_level == 0);
    _stack->undo();
}

void ADUndoManager::redo()
{
    Q_ASSERT(_level == 0);
    _stack->redo();
}

void ADUndoManager::setActionName(const QString &name)
{
    if (_building) {
        _building->setText(name);
        return;
    }
    if (_replaying) {
        _replaying->setText(name);
        return;
    }
    // An open group with nothing in it yet takes the name with its first
    // action. With no group open there is nothing to name: the last group on
    // the stack belongs to another edit.
    if (_level > 0)
        _pendingName = name;
}

QString ADUndoManager::undoActionName() const
{
    return _stack->undoText();
}

QString ADUndoManager::redoActionName() const
{
    return _stack->redoText();
}

void ADUndoManager::removeAllActions()
{
    _stack->clear();
    _building = nullptr;
    _pendingName.clear();
    _level = 0;
    _eventGroupOpen = false;
}

void ADUndoManager::enableUndoRegistration()
{
    Q_ASSERT(_disabled > 0);
    --_disabled;
}
