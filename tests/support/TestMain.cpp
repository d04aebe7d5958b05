// The test programs' main: a Qt application object first, so that timers,
// queued calls and (in widget tests) widgets work; offscreen unless told otherwise.

#include <QCoreApplication>

#include "TestHome.h"

#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char **argv)
{
    if (!std::getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    useTestHome();
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
