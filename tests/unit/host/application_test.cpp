#include "host/application.h"

#include <gtest/gtest.h>

#include <string>

#include "golden.h"

namespace vistel {
namespace {

TEST(Application, IsOfTheProjectsVersion) {
    std::ifstream file(fileOfTree("CMakeLists.txt"));
    const std::string project{std::istreambuf_iterator<char>(file), {}};
    const std::string version = std::string(" VERSION ") + applicationVersion() + " ";
    EXPECT_NE(project.find("project(vistel" + version), std::string::npos) << applicationVersion();
}

TEST(Application, HasTheNameThatWasSet) {
    setApplicationName("Other");
    EXPECT_EQ(applicationName(), "Other");
    setApplicationName("");
}

}  // namespace
}  // namespace vistel
