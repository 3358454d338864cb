// This test program in its second role: the converter or command that a source starts. The role is
// told by an environment variable; the file to print is the word before the last ("stdout").
#include <cstdio>
#include <cstdlib>

#include "sequence_fixture.h"

namespace vistel {

namespace {

constexpr const char* roleVariable = "VISTEL_TEST_CHILD";

[[noreturn]] void leave(int status) {
    std::fflush(stdout);
    std::_Exit(status);
}

class ChildRun : public testing::Environment {
 public:
    explicit ChildRun(std::string role) : role_(std::move(role)) {}
    void SetUp() override {
        platform::setBinaryFileMode();
        const std::vector<std::string> words = testing::internal::GetArgvs();
        if (role_ == "fail" || words.size() < 3) leave(3);
        std::string name = words[words.size() - 2];
        if (role_ == "frame") name += "." + platform::environmentVariable("FRAME").value_or("none");
        const platform::FilePtr file(platform::openFile(name, "r"));
        if (!file) leave(4);
        char block[4096];
        while (const size_t count = std::fread(block, 1, sizeof block, file.get())) {
            std::fwrite(block, 1, count, stdout);
        }
        leave(0);
    }

 private:
    std::string role_;
};

bool enterRole() {
    const std::optional<std::string> role = platform::environmentVariable(roleVariable);
    if (!role || role->empty()) return false;
    auto& listeners = testing::UnitTest::GetInstance()->listeners();
    delete listeners.Release(listeners.default_result_printer());
    testing::AddGlobalTestEnvironment(new ChildRun(*role));
    return true;
}
const bool inRole = enterRole();

}  // namespace

std::string childProgram(ChildRole role) {
    const char* const names[] = {"print", "frame", "fail"};
    platform::setEnvironmentVariable(roleVariable, names[static_cast<int>(role)]);
    return platform::programPath();
}

}  // namespace vistel
