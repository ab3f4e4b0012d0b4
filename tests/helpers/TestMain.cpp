#include "tests/helpers/TestSupport.h"

int main(int argc, char** argv) {
    testing_support::IsolateUserFiles();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
