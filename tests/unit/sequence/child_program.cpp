// This test program in its second role: the converter or command that a source starts. The role is
// told by an environment variable; the file to print is the word before the last ("stdout").
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "sequence_fixture.h"

namespace vistel {

namespace {

constexpr const char* roleVariable = "VISTEL_TEST_CHILD";

[[noreturn]] void leave(int status) {
    std::fflush(stdout);
    std::_Exit(status);
}

// Longer than `promptly`, but not for ever, and not when the test has taken its files away.
void stay(const std::string& name) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(90);
    while (platform::fileExists(name) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

void print(const std::string& bytes) {
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    std::fflush(stdout);
}

[[noreturn]] void convertFile(const std::string& name, const std::string& bytes) {
    if (const platform::FilePtr count{platform::openFile(name + ".count", "a")})
        std::fputc('1', count.get());
    const std::string task = bytes.substr(0, 4), rest = bytes.substr(4);
    if (task == convert::andComplain || task == convert::notBut)
        std::fprintf(stderr, "%s\n", convert::complaint);
    if (task == convert::notBut) leave(3);
    print(task == convert::halfAndStall ? rest.substr(0, rest.size() / 2) : rest);
    if (task == convert::halfAndStall || task == convert::andStay) stay(name);
    leave(task == convert::andFail ? 3 : 0);
}

class ChildRun : public testing::Environment {
 public:
    explicit ChildRun(std::string role) : role_(std::move(role)) {}
    void SetUp() override {
        platform::setBinaryFileMode();
        const std::vector<std::string> words = testing::internal::GetArgvs();
        if (role_ == "chart" && words.size() == 1) {
            print(role_);
            leave(0);
        }
        if (role_ == "fail" || words.size() < 3) leave(3);
        std::string name = words[words.size() - 2];
        if (role_ == "frame") name += "." + platform::environmentVariable("FRAME").value_or("none");
        platform::FilePtr file(platform::openFile(name, "r"));
        if (!file) leave(4);
        std::string bytes;
        char block[4096];
        while (const size_t count = std::fread(block, 1, sizeof block, file.get()))
            bytes.append(block, count);
        file.reset();
        if (role_ == "convert") convertFile(name, bytes);
        print(bytes);
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

int conversions(const fs::path& file) {
    std::error_code none;
    const auto size = fs::file_size(fs::path(file) += ".count", none);
    return none ? 0 : int(size);
}

std::string childProgram(ChildRole role) {
    const char* const names[] = {"print", "frame", "fail", "convert", "chart"};
    platform::setEnvironmentVariable(roleVariable, names[static_cast<int>(role)]);
    return platform::programPath();
}

}  // namespace vistel
