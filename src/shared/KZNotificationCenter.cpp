#include "KZNotificationCenter.h"

#include <algorithm>

KZNotificationCenter &KZNotificationCenter::defaultCenter()
{
    static KZNotificationCenter center;
    return center;
}

KZNotificationCenter::Token KZNotificationCenter::addObserver(const QString &name,
                                                              const void *object, Observer observer)
{
    const Token token = _nextToken++;
    _registrations.push_back(
        {token, name, object, std::make_shared<Observer>(std::move(observer))});
    return token;
}

void KZNotificationCenter::removeObserver(Token token)
{
    std::erase_if(_registrations, [token](const Registration &r) { return r.token == token; });
}

void KZNotificationCenter::postNotification(const QString &name, const void *object,
                                            const QVariantMap &userInfo)
{
    const KZNotification notification{name, object, userInfo};
    // A snapshot, so observers may add or remove observers while being called;
    // one removed meanwhile is not called.
    const std::vector<Registration> snapshot = _registrations;
    for (const Registration &r : snapshot) {
        if (!r.name.isEmpty() && r.name != name)
            continue;
        if (r.object && r.object != object)
            continue;
        const bool stillRegistered =
            std::any_of(_registrations.begin(), _registrations.end(),
                        [&r](const Registration &x) { return x.token == r.token; });
        if (stillRegistered)
            (*r.observer)(notification);
    }
}
