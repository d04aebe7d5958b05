#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class KZNotificationCenter;
class QUndoStack;

inline const QString ADUndoManagerWillCloseUndoGroupNotification =
    QStringLiteral("ADUndoManagerWillCloseUndoGroupNotification");

/// A document's undo manager: actions registered while editing are grouped,
/// and undoing a group runs its actions in reverse order; what they register
/// meanwhile becomes the group's redo, and redoing registers the undo again.
/// Registrations outside any group open one that closes at the end of the
/// event-loop pass (`groupsByEvent`). Each top-level group is one command of
/// a QUndoStack, which gives Qt's undo actions and clean state. Just before a
/// top-level group closes (also the groups that undo and redo build), the
/// will-close notification is posted on the centre, and what its observers
/// register still joins that group. Main thread only.
class ADUndoManager : public QObject
{
    Q_OBJECT

public:
    using Action = std::function<void()>;

    explicit ADUndoManager(QObject *parent = nullptr);
    ~ADUndoManager() override;

    QUndoStack *undoStack() const;
    /// Where the will-close notification goes; the default centre unless set. Not owned.
    void setNotificationCenter(KZNotificationCenter *center);

    /// Records `action` as the undo of what `target` just did. The target is
    /// remembered as `lastUndoTarget` even while registration is disabled.
    void registerUndo(const void *target, Action action);
    /// The target of the latest registration, compared by identity only.
    const void *lastUndoTarget() const { return _lastUndoTarget; }

    void beginUndoGrouping();
    void endUndoGrouping();
    int groupingLevel() const { return _level; }
    bool groupsByEvent() const { return _groupsByEvent; }
    void setGroupsByEvent(bool groupsByEvent) { _groupsByEvent = groupsByEvent; }

    bool canUndo() const;
    bool canRedo() const;
    /// Closes a group left open by the event loop first.
    void undo();
    void redo();
    bool isUndoing() const { return _undoing; }
    bool isRedoing() const { return _redoing; }

    /// Names the group being built, or the one being undone or redone. An open
    /// group that holds nothing yet takes the name with its first action; with
    /// no group open, nothing is named.
    void setActionName(const QString &name);
    QString undoActionName() const;
    QString redoActionName() const;

    void removeAllActions();
    void disableUndoRegistration() { ++_disabled; }
    void enableUndoRegistration();
    bool isUndoRegistrationEnabled() const { return _disabled == 0; }

private:
    class Command;
    friend class Command;

    void closeEventGroup();
    void postWillClose();

    std::unique_ptr<QUndoStack> _stack;
    KZNotificationCenter *_center;
    Command *_building = nullptr;  // the command of the open top-level group, owned by the stack
    Command *_replaying = nullptr; // the command being undone or redone
    QString _pendingName;          // for the open group's first action
    const void *_lastUndoTarget = nullptr;
    int _level = 0;
    int _disabled = 0;
    bool _groupsByEvent = true;
    bool _eventGroupOpen = false;
    bool _undoing = false;
    bool _redoing = false;
};
