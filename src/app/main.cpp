// The editor's entry: one running instance per user takes every launch's
// files and URLs; "-" reads plist text from standard input.

#include "ADAppController.h"
#include "ADInstanceChannel.h"

#include "document/KZAutosaveStore.h"
#include "preferences/ADPreferences.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QUrl>

#include <cstdio>

namespace {

// Qt's own message for a missing display is long and names plugins; say what to do.
bool hasDisplay()
{
    return qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsSet("DISPLAY") ||
           qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

// Paths made absolute against this launch's folder, so that another instance can open them.
QStringList absoluteRequests(const QStringList &arguments)
{
    QStringList requests;
    for (const QString &argument : arguments) {
        const QUrl url(argument);
        const bool isUrl = url.scheme().size() > 1 && !QFile::exists(argument);
        requests << (isUrl ? argument : QDir::current().absoluteFilePath(argument));
    }
    return requests;
}

} // namespace

int main(int argc, char *argv[])
{
    if (!hasDisplay()) {
        std::fprintf(stderr, "arbordeck: no display to show its window on; without one, run it "
                             "as: xvfb-run -a arbordeck FILE\n");
        return 1;
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("arbordeck"));
    QApplication::setApplicationDisplayName(QStringLiteral("Arbordeck"));
    QApplication::setApplicationVersion(QStringLiteral(ARBORDECK_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("arbordeck"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Property list editor"));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("files"),
        QStringLiteral("Files or arbordeck: URLs to open; - reads plist text from standard input."),
        QStringLiteral("[files...]"));
    const QCommandLineOption exitWhenShown(
        QStringLiteral("exit-when-shown"),
        QStringLiteral("Exit as soon as the first window is painted (for timing the start)."));
    parser.addOption(exitWhenShown);
    parser.process(application);

    QStringList arguments = parser.positionalArguments();
    QByteArray standardInput;
    if (arguments.removeAll(QStringLiteral("-")) > 0) {
        QFile input;
        if (input.open(stdin, QIODevice::ReadOnly))
            standardInput = input.readAll();
        standardInput.detach(); // never null: "-" asks for a document even when empty
    }
    const QStringList requests = absoluteRequests(arguments);
    ADInstanceChannel channel;
    const bool timing = parser.isSet(exitWhenShown);
    if (!timing && standardInput.isNull() && channel.sendToRunningInstance(requests))
        return 0;
    if (!timing)
        channel.listen();

    ADAppController controller(ADPreferences::shared(), KZAutosaveStore::defaultFolder());
    controller.setExitWhenShown(timing);
    QObject::connect(&channel, &ADInstanceChannel::requestsReceived, &controller,
                     &ADAppController::openRequests);
    controller.applicationDidFinishLaunching(requests, standardInput);
    return application.exec();
}
