#include "tests/helpers/TestSupport.h"

#include "ui/draw/PonderaApp.h"

#include <cstdlib>

int main(int argc, char** argv) {
    testing_support::IsolateUserFiles();
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    PonderaApp app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
