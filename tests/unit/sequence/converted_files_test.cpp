#include "sequence/converted_files.h"

#include "iff/result_codes.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

class Converted : public SequenceTest {
 protected:
    // A file that was last written an hour ago, or at a time to come, which counts as just now.
    platform::FileStamp stampOf(const std::string& name, bool justNow = false) {
        write(name, "picture");
        const fs::path file = folder_ / name;
        const auto hour = std::chrono::hours(justNow ? 1 : -1);
        fs::last_write_time(file, fs::last_write_time(file) + hour);
        const platform::FilePtr stream(platform::openFile(path(name), "r"));
        return platform::fileStamp(stream.get()).value_or(platform::FileStamp{});
    }
    ConvertedFiles files_;
};

TEST_F(Converted, AFileIsRememberedAsItIs) {
    const platform::FileStamp stamp = stampOf("a");
    EXPECT_FALSE(files_.contains("a", stamp));
    files_.remember("a", stamp, std::nullopt);
    EXPECT_TRUE(files_.contains("a", stamp));
    EXPECT_FALSE(files_.contains("b", stamp));
    EXPECT_FALSE(files_.failure("a", stamp));
    platform::FileStamp other = stamp;
    ++other.size;
    EXPECT_FALSE(files_.contains("a", other));
}

TEST_F(Converted, AFailureIsRememberedAsLongAsTheFileStaysAsItIs) {
    const platform::FileStamp stamp = stampOf("a");
    files_.remember("a", stamp, FailedReading{iffNotIff, "no picture"});
    ASSERT_TRUE(files_.failure("a", stamp));
    EXPECT_EQ(files_.failure("a", stamp)->code, iffNotIff);
    EXPECT_EQ(files_.failure("a", stamp)->reason, "no picture");
    platform::FileStamp other = stamp;
    ++other.modified;
    EXPECT_FALSE(files_.failure("a", other));
    files_.remember("a", other, std::nullopt);
    EXPECT_FALSE(files_.failure("a", stamp));
}

TEST_F(Converted, AFileThatWasWrittenJustNowIsNotRemembered) {
    const platform::FileStamp stamp = stampOf("a", true);
    files_.remember("a", stamp, FailedReading{iffNotIff, "no picture"});
    EXPECT_FALSE(files_.contains("a", stamp));
    EXPECT_FALSE(files_.failure("a", stamp));
}

TEST(ConvertedFiles, WhatIsWrongStaysSoUntilItWasReadWell) {
    ConvertedFiles files;
    EXPECT_FALSE(files.isWrong("a"));
    files.setWrong("a", true);
    EXPECT_TRUE(files.isWrong("a"));
    EXPECT_FALSE(files.isWrong("b"));
    files.setWrong("a", false);
    EXPECT_FALSE(files.isWrong("a"));
}

TEST_F(Converted, OneFileOrAllAreForgotten) {
    const platform::FileStamp stamp = stampOf("a");
    for (const char* name : {"a", "b", "c"}) files_.remember(name, stamp, std::nullopt);
    files_.forget("a");
    EXPECT_FALSE(files_.contains("a", stamp));
    EXPECT_TRUE(files_.contains("b", stamp));
    files_.forget();
    EXPECT_FALSE(files_.contains("b", stamp) || files_.contains("c", stamp));
}

}  // namespace
}  // namespace vistel
