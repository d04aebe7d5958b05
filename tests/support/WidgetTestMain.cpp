// The main of test programs that need a QApplication (widgets, fonts, text
// layout): offscreen unless told otherwise, so nothing needs a display.

#include <QApplication>

#include "TestHome.h"

#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char **argv)
{
    if (!std::getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    useTestHome();
    QApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
