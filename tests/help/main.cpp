#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // CTest sets the platform for the runs, but not for the build-time listing
    // of the cases, which must not need a display either.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
