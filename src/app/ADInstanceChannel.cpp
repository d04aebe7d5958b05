#include "ADInstanceChannel.h"

#include <QDataStream>
#include <QLocalSocket>

#include <unistd.h>

namespace {

// What the running instance writes back once it has the requests.
constexpr char kTaken = '!';

} // namespace

ADInstanceChannel::ADInstanceChannel(QString name, QObject *parent)
    : QObject(parent), _name(std::move(name))
{
    connect(&_server, &QLocalServer::newConnection, this, &ADInstanceChannel::takeConnection);
}

QString ADInstanceChannel::defaultName()
{
    return QStringLiteral("arbordeck-%1").arg(getuid());
}

bool ADInstanceChannel::sendToRunningInstance(const QStringList &requests, int timeoutMs) const
{
    QLocalSocket socket;
    socket.connectToServer(_name);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    QDataStream stream(&socket);
    stream << requests;
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    while (socket.bytesAvailable() < 1) {
        if (!socket.waitForReadyRead(timeoutMs))
            return false;
    }
    char answer = 0;
    return socket.getChar(&answer) && answer == kTaken;
}

bool ADInstanceChannel::listen()
{
    // Asked first: with access options set, a listen moves its socket over
    // whatever stands at the name, a live instance's socket included.
    QLocalSocket probe;
    probe.connectToServer(_name);
    if (probe.waitForConnected(500))
        return false;
    // What stands there now is a socket file left by an instance that died.
    QLocalServer::removeServer(_name);
    _server.setSocketOptions(QLocalServer::UserAccessOption);
    return _server.listen(_name);
}

void ADInstanceChannel::takeConnection()
{
    while (QLocalSocket *socket = _server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            QDataStream stream(socket);
            stream.startTransaction();
            QStringList requests;
            stream >> requests;
            if (!stream.commitTransaction())
                return;
            socket->putChar(kTaken);
            socket->flush();
            emit requestsReceived(requests);
        });
    }
}
