#include <gtest/gtest.h>

#include "golden.h"

std::filesystem::path vistel::fileOfTree(const std::string& path) {
    return std::filesystem::path(VISTEL_SOURCE_DIR) / path;
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
