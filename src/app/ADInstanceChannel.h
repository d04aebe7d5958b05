#pragma once

#include <QLocalServer>
#include <QObject>
#include <QStringList>

/// One editor per user: a second launch hands what it was asked to open
/// (absolute paths and URLs) to the running one over a local socket and
/// exits. The running one listens here and hears each launch's requests.
/// Main thread only.
class ADInstanceChannel : public QObject
{
    Q_OBJECT

public:
    /// `name`: the socket's name; by default one per user.
    explicit ADInstanceChannel(QString name = defaultName(), QObject *parent = nullptr);

    static QString defaultName();

    /// Hands `requests` to a running instance; true once it has taken them,
    /// false when none runs (or it does not answer within `timeoutMs`).
    bool sendToRunningInstance(const QStringList &requests, int timeoutMs = 3000) const;
    /// Starts listening, replacing a socket that a dead instance left
    /// behind; false when another instance listens already.
    bool listen();

signals:
    void requestsReceived(const QStringList &requests);

private:
    void takeConnection();

    QString _name;
    QLocalServer _server;
};
