#include "app/session.h"

#include <gtest/gtest.h>

#include "app/recorded_services.h"
#include "app/usage.h"
#include "host/messages.h"
#include "settings/own_settings.h"

namespace vistel {
namespace {

class Session : public OwnSettings {
 protected:
    void SetUp() override {
        OwnSettings::SetUp();
        viewerState = ViewerState{};
        platform::writeSetting("FPS", "24");
    }
    void TearDown() override {
        viewerState = ViewerState{};
        OwnSettings::TearDown();
    }
    // Runs the words and returns the exit status; what was printed is kept.
    int run(std::vector<const char*> words) {
        words.insert(words.begin(), "/opt/bin/vistel");
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = runSession(static_cast<int>(words.size()), words.data(), services);
        errors = testing::internal::GetCapturedStderr();
        output = testing::internal::GetCapturedStdout();
        return status;
    }
    StartUpServices services = recordedServices();
    std::string output, errors;
};

// What a pager passed on: its prompts are taken out, and blanks, since it may change line ends.
std::string withoutPaging(std::string text) {
    constexpr std::string_view prompt = "-- More... --";
    for (size_t at; (at = text.find(prompt)) != std::string::npos;) text.erase(at, prompt.size());
    std::erase_if(text, [](char c) { return c == '\r' || c == '\n' || c == ' '; });
    return text;
}

TEST_F(Session, ANormalRunEndsWithStatusZeroAndStoresTheFrameRate) {
    recorder.showing = [] { viewerState.frameRate = 72; };
    EXPECT_EQ(run({"a"}), 0);
    EXPECT_EQ(platform::readSetting("FPS"), "72");
    EXPECT_EQ(output, "");
    EXPECT_EQ(errors, "");
}

TEST_F(Session, WhatOtherWindowsShowOutlastsTheLastFileAndTheSettingsAreStoredBefore) {
    services.outlastWindows = [] { note("stored " + platform::readSetting("FPS").value_or("")); };
    recorder.showing = [] { viewerState.frameRate = 72; };
    EXPECT_EQ(run({"a"}), 0);
    EXPECT_TRUE(recorder.calls.ends_with("show a\nstored 72\n")) << recorder.calls;
}

TEST_F(Session, TheFolderOfTheLastSourceIsStored) {
    recorder.opening = [](const Tstring& name) {
        if (name != "pipe:cat c") viewerState.sourceFolder = "/pictures/" + name;
        return name == "b" ? -4 : 0;
    };
    EXPECT_EQ(run({"a", "b", "pipe:cat c"}), 0);
    EXPECT_EQ(platform::readSetting("LastFolder"), "/pictures/b");
}

TEST_F(Session, FilesThatFailDoNotChangeTheStatus) {
    recorder.opening = [](const Tstring&) { return -4; };
    EXPECT_EQ(run({"a"}), 0);
}

TEST_F(Session, VerboseCountsFilesAndFailuresOnStandardError) {
    recorder.opening = [](const Tstring& name) { return name == "b" ? -4 : 0; };
    EXPECT_EQ(run({"-v", "a", "b", "c"}), 0);
    EXPECT_EQ(errors, "Files: 3, failed: 1\n");
}

TEST_F(Session, RequestedFilesAreServedAfterTheList) {
    int shown = 0;
    recorder.showing = [&] {
        if (++shown == 1) viewerState.pendingOpen = "later";
    };
    EXPECT_EQ(run({"a", "b"}), 0);
    EXPECT_TRUE(
        recorder.calls.ends_with("open b\nshow b\nstart source\nclear image state\n"
                                 "open later\nshow later\n"))
        << recorder.calls;
}

TEST_F(Session, TheUsageGoesToStandardErrorWithStatusOneAndStoresNothing) {
    platform::writeSetting("FPS", "31");
    EXPECT_EQ(run({"-r", "50", "-Q"}), 1);
    EXPECT_EQ(errors,
              usageText("vistel") + "\n" + formatMessage(Message::rVTUnknownOption, {"-Q"}) + "\n");
    EXPECT_EQ(output, "");
    EXPECT_EQ(platform::readSetting("FPS"), "31");
}

TEST_F(Session, TheVersionIsOneLineOnStandardOutput) {
    EXPECT_EQ(run({"-v", "--version", "-Q"}), 0);
    EXPECT_EQ(output, "VisTel version 8.5, image viewer and flipbook player\n");
    EXPECT_EQ(errors, "");
    EXPECT_EQ(run({"--version=1"}), 1);
}

TEST_F(Session, AnIncompleteRangeAmongTheFilesIsAUsageError) {
    EXPECT_EQ(run({"-r", "50", "a", "-n5", "9"}), 1);
    EXPECT_EQ(errors, usageText("vistel") + "\n" +
                          formatMessage(Message::rVTMissingArgument, {"-n5"}) + "\n");
    EXPECT_EQ(platform::readSetting("FPS"), "24");
}

TEST_F(Session, HelpReachesStandardOutputAndEndsWithStatusZero) {
    EXPECT_EQ(run({"-h", "-Q"}), 0);
    EXPECT_EQ(withoutPaging(output), withoutPaging(helpText()));
    EXPECT_EQ(recorder.calls, callsBeforeOptions);
}

TEST_F(Session, HelpIsPrintedWhereThereIsNoPager) {
    platform::catchInterrupts();  // a pager that is not there must not end the program
    const auto path = platform::environmentVariable("PATH");
    platform::setEnvironmentVariable("PATH", (folder() / "empty").string());
    const int status = run({"-h"});
    platform::setEnvironmentVariable("PATH", path.value_or(""));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(withoutPaging(output), withoutPaging(helpText()));
}

}  // namespace
}  // namespace vistel
