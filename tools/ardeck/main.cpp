// ardeck: reads, checks, converts and shows property lists from the shell.

#include "ArdeckOptions.h"
#include "ArdeckTool.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const ArdeckOptions options = ArdeckOptions::parse(app.arguments().mid(1)); // opens no file
    ArdeckIO io{
        [] {
            QByteArray all;
            char buffer[65536];
            for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, stdin)) > 0;)
                all.append(buffer, qsizetype(n));
            return all;
        },
        [](const QByteArray &data) {
            std::fwrite(data.constData(), 1, size_t(data.size()), stdout);
        },
        [](const QString &line) { std::fprintf(stderr, "%s\n", line.toLocal8Bit().constData()); },
    };
    return ArdeckTool(std::move(io)).run(options);
}
