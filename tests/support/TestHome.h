#pragma once

// Gives this test program data and configuration folders of its own, so that
// test programs running side by side never share a settings or viewers file,
// and no test touches the user's. Call before the application object is made.

#include <QTemporaryDir>

#include <cstdlib>

inline void useTestHome()
{
    static QTemporaryDir home;
    setenv("XDG_DATA_HOME", qPrintable(home.filePath(QStringLiteral("data"))), 1);
    setenv("XDG_CONFIG_HOME", qPrintable(home.filePath(QStringLiteral("config"))), 1);
}
