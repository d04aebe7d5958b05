#pragma once

#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <vector>

/// One posted notification: a name, the object it concerns (compared by
/// identity only, never dereferenced by the centre) and a user-info record.
struct KZNotification
{
    QString name;
    const void *object = nullptr;
    QVariantMap userInfo;
};

/// Named notifications, posted synchronously to the observers in the order
/// they registered. There is one default centre for the process and one
/// private centre per document, so listeners hear one document only.
/// An observer added or removed while a notification is delivered takes
/// effect from the next post. One thread (the main thread) per centre.
class KZNotificationCenter
{
public:
    using Observer = std::function<void(const KZNotification &)>;
    using Token = quint64;

    static KZNotificationCenter &defaultCenter();

    /// Calls `observer` for notifications of `name` (every name when empty)
    /// about `object` (every object when null). Answers a token for removal.
    Token addObserver(const QString &name, const void *object, Observer observer);
    void removeObserver(Token token);

    void postNotification(const QString &name, const void *object,
                          const QVariantMap &userInfo = {});

private:
    struct Registration
    {
        Token token;
        QString name;
        const void *object;
        std::shared_ptr<Observer> observer;
    };
    std::vector<Registration> _registrations;
    Token _nextToken = 1;
};
