#include <QCoreApplication>
#include <gtest/gtest.h>

// The status log pumps events, so the cases need an application object.
int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
