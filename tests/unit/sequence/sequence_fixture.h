// A folder of its own for each test, a state as at start, and frame files made in memory.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "platform/files.h"
#include "platform/process.h"
#include "sequence/converter.h"
#include "sequence/frame_reader.h"
#include "sequence/sequence_state.h"

namespace vistel {

namespace fs = std::filesystem;

// --- frame files ---------------------------------------------------------------------------------
inline std::string bigEndian(uint32_t value, int bytes) {
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) text += char(value >> shift & 0xFF);
    return text;
}

inline std::string chunk(const std::string& id, const std::string& body) {
    std::string text = id + bigEndian(uint32_t(body.size()), 4) + body;
    text.resize((text.size() + 3) / 4 * 4);
    return text;
}

// One image form of 4 x 4 pixels, all of the given red value, blue and green 0.
inline std::string imageForm(int red) {
    const std::string header = bigEndian(4, 4) + bigEndian(4, 4) + bigEndian(1, 2) +
                               bigEndian(1, 2) + bigEndian(1, 4) + bigEndian(0, 2) +
                               bigEndian(1, 2) + bigEndian(0, 4);
    std::string tile = bigEndian(0, 2) + bigEndian(0, 2) + bigEndian(3, 2) + bigEndian(3, 2);
    for (int i = 0; i < 16; ++i) tile += std::string("\0\0", 2) + char(red);
    const std::string tiles = chunk("FOR4", "TBMP" + chunk("RGBA", tile));
    return chunk("FOR4", "CIMG" + chunk("TBHD", header) + tiles);
}

// The red value of the first pixel; -1 without a picture.
inline int redOf(const FrameStore& frame) {
    return frame.colour.empty() ? -1 : static_cast<int>(frame.colour.data()[0] & 0xFF);
}

// --- the folder ----------------------------------------------------------------------------------
class SequenceTest : public testing::Test {
 protected:
    void SetUp() override {
        static int count = 0;
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        before_ = fs::current_path();
        folder_ = fs::temp_directory_path() /
                  ("vistel_sequence_" + std::to_string(std::random_device{}()) + "_" +
                   std::to_string(++count) + "_" + info->name());
        fs::create_directories(folder_);
        fs::current_path(folder_);
        state_.startDirectory = platform::currentDirectory();
        state_.searchDirs = {
            "", "./", "work/image/project/", "work/tex/project/", "work/image/", "work/tex/"};
    }
    void TearDown() override {
        state_.oneFileStream = {};  // an open file cannot be removed everywhere
        converterProgram = findConverter_;
        fs::current_path(before_);
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    void write(const std::string& name, const std::string& bytes) {
        const fs::path path = folder_ / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
    }
    void touch(std::initializer_list<const char*> names) {
        for (const char* name : names) write(name, "x");
    }
    // The absolute name of a file in the folder, with slashes.
    Tstring path(const std::string& name) { return (folder_ / name).generic_string(); }

    // An animation over this range, at its first frame.
    void setRange(int first, int last, int step) {
        state_.animation = 1;
        state_.currentFrame = state_.firstFrame = first;
        state_.lastFrame = last;
        state_.frameStep = step;
    }

    fs::path folder_, before_;
    SequenceState state_;
    ReadTerms terms_;

 private:
    const decltype(converterProgram) findConverter_ = converterProgram;
};

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// A command that runs this test program again as a converter or a user's command
// (child_program.cpp).
// `chart` prints its own name and takes no word.
enum class ChildRole { printFile, printFrameFile, fail, convert, chart };
std::string childProgram(ChildRole role);

// A file for ChildRole::convert, which leaves out the first word and does as that says.
inline std::string foreignFile(const char* task, const std::string& bytes) { return task + bytes; }
namespace convert {
constexpr const char* well = "GOOD";
constexpr const char* andFail = "FAIL";
constexpr const char* halfAndStall = "HALF";  // writes half of it and does not end
constexpr const char* andStay = "STAY";       // writes all and does not end
constexpr const char* andComplain = "TELL";   // writes all, and "complaint" to standard error
constexpr const char* notBut = "CRY!";        // only "complaint", and fails
constexpr const char* complaint = "complaint";
}  // namespace convert
// Far less than what one takes that does not end.
constexpr std::chrono::seconds promptly{80};
// How often the file was converted.
int conversions(const fs::path& file);

}  // namespace vistel
