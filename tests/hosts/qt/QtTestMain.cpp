// A test program of widgets needs an application first; a list of its tests does not.
#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    const QApplication application{argc, argv};
    return RUN_ALL_TESTS();
}
