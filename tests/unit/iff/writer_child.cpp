#include "iff/writer_child.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "iff/image_bytes.h"
#include "iff/image_writer.h"
#include "platform/process.h"

namespace vistel::test {

namespace {

constexpr const char* roleVariable = "VISTEL_TEST_WRITER_ROLE";
constexpr const char* keptVariable = "VISTEL_TEST_KEPT_NAME";

int writeImage(ImageWriter& writer) {
    int code = writer.writeHeader(childImageWidth, childImageHeight, childImageFlags);
    if (code == iffOk) code = writer.beginImageData();
    for (uint32_t y = 0; y < childImageHeight && code == iffOk; ++y) {
        std::vector<uint32_t> row;
        std::vector<float> z;
        for (uint32_t x = 0; x < childImageWidth; ++x) {
            row.push_back(planePixel(samplePixel(x, y)));
            z.push_back(sampleDepth(x, y));
        }
        code = writer.writeScanline(row.data(), z.data());
    }
    const int closed = writer.close();
    return code == iffOk ? closed : code;
}

int writeToOutput() {
    ImageWriter writer;
    const int code = writer.open("stdout");
    return code == iffOk ? writeImage(writer) : code;
}

int save(const std::vector<std::string>& words) {
    ImageWriter writer;
    const std::string format = words.size() > 2 ? words[2] : "";
    const int code = writer.open(words.at(1), &format);
    return code == iffOk ? writeImage(writer) : code;
}

void convert(const std::vector<std::string>& words) {
    const platform::FilePtr kept(
        platform::openFile(platform::environmentVariable(keptVariable).value(), "w"));
    for (size_t i = 1; i < words.size(); ++i) std::fprintf(kept.get(), "%s\n", words[i].c_str());
    std::fputs("\n", kept.get());
    const platform::FilePtr input(platform::duplicateStandardStream(0, "r+"));
    for (int byte; (byte = std::fgetc(input.get())) != EOF;) std::fputc(byte, kept.get());
}

class WriterChild : public testing::Environment {
 public:
    explicit WriterChild(WriterRole role) : role_(role) {}
    void SetUp() override {
        platform::setBinaryFileMode();
        const std::vector<std::string> words = testing::internal::GetArgvs();
        int status = 0;
        if (role_ == WriterRole::writeToOutput) status = -writeToOutput();
        if (role_ == WriterRole::save) {
            setWriterRole(words.size() > 3 ? WriterRole::refuse : WriterRole::convert);
            status = -save(words);
        }
        if (role_ == WriterRole::convert || role_ == WriterRole::refuse) convert(words);
        if (role_ == WriterRole::refuse) status = 3;
        std::fflush(nullptr);
        std::_Exit(status);
    }

 private:
    WriterRole role_;
};

bool enterRole() {
    const int role = std::atoi(platform::environmentVariable(roleVariable).value_or("0").c_str());
    if (role == 0) return false;
    auto& listeners = testing::UnitTest::GetInstance()->listeners();
    delete listeners.Release(listeners.default_result_printer());
    testing::AddGlobalTestEnvironment(new WriterChild(static_cast<WriterRole>(role)));
    return true;
}
const bool inRole = enterRole();

}  // namespace

void setWriterRole(WriterRole role) {
    platform::setEnvironmentVariable(roleVariable, std::to_string(static_cast<int>(role)));
}
void setKeptName(const std::string& name) { platform::setEnvironmentVariable(keptVariable, name); }

}  // namespace vistel::test
