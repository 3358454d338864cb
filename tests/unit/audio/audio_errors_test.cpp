#include "audio/audio_errors.h"

#include "audio/audio_files.h"

namespace vistel {
namespace {

TEST(AudioErrors, GoToStandardErrorWithTheirCode) {
    testing::internal::CaptureStderr();
    AFreporterror(afChunkHeader, "%s: three of %d\n", "AFopenfile", 4);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Audio File Library error 108:  AFopenfile: three of 4\n\n");
}

TEST(AudioErrors, GoToTheFunctionThatWasInstalledLast) {
    static std::string seen;
    const AFerrorfunc before =
        AFseterrorfunc([](int32_t code, const char* text) { seen = std::to_string(code) + text; });
    AFreporterror(afBadTrack, "%s", "x");
    EXPECT_EQ(seen, "24x");
    const AFerrorfunc ours = AFseterrorfunc(before);
    EXPECT_NE(ours, before);
    EXPECT_EQ(AFseterrorfunc(before), before);
}

TEST(AudioErrors, ALongTextIsCut) {
    test::Reports reports;
    const std::string name(5000, 'n');
    AFreporterror(afOpenFailed, "%s", name.c_str());
    EXPECT_EQ(reports.all(), "3 " + name.substr(0, 1023));
}

}  // namespace
}  // namespace vistel
