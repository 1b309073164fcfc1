// Test entry point. Under Windows every message box is captured before any
// test runs, so that no test can ever wait on a modal box.
#include <gtest/gtest.h>

#ifdef _WIN32
#include "common/captured_messages.h"
#endif

int main(int argc, char** argv)
{
#ifdef _WIN32
    cvas::test::InstallMessageCapture();
#endif
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
