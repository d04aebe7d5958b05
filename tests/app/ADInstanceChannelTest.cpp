#include "app/ADInstanceChannel.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QThread>
#include <QUuid>

#include <gtest/gtest.h>

namespace {

QString uniqueName()
{
    return QStringLiteral("arbordeck-test-") + QUuid::createUuid().toString(QUuid::Id128);
}

TEST(ADInstanceChannel, ASecondLaunchHandsItsRequestsToTheFirst)
{
    const QString name = uniqueName();
    ADInstanceChannel running(name);
    ASSERT_TRUE(running.listen());
    ADInstanceChannel second(name);
    EXPECT_FALSE(second.listen()) << "one listener per name";

    QSignalSpy heard(&running, &ADInstanceChannel::requestsReceived);
    const QStringList requests{QStringLiteral("/tmp/a b.plist"),
                               QStringLiteral("arbordeck://help")};
    // The sender blocks for the answer, so it runs beside the listener's loop.
    bool taken = false;
    std::unique_ptr<QThread> sender(
        QThread::create([&] { taken = ADInstanceChannel(name).sendToRunningInstance(requests); }));
    sender->start();
    while (!sender->wait(10))
        QCoreApplication::processEvents();
    EXPECT_TRUE(taken);
    ASSERT_EQ(heard.count(), 1);
    EXPECT_EQ(heard.front().front().toStringList(), requests);
}

TEST(ADInstanceChannel, NoRunningInstanceTakesNothing)
{
    EXPECT_FALSE(ADInstanceChannel(uniqueName()).sendToRunningInstance({QStringLiteral("x")}, 200));
}

TEST(ADInstanceChannel, ReplacesTheSocketOfAnInstanceThatDied)
{
    const QString name = uniqueName();
    // A killed instance leaves its socket file behind.
    QFile leftBehind(QDir::temp().filePath(name));
    ASSERT_TRUE(leftBehind.open(QIODevice::WriteOnly));
    leftBehind.close();
    ADInstanceChannel channel(name);
    EXPECT_TRUE(channel.listen());
}

} // namespace
