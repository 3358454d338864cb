#include "app/option_table.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "app/start_up_fixture.h"
#include "host/messages.h"

namespace vistel {
namespace {

using OptionEffect = StartUpTest;
using Words = std::vector<const char*>;

std::string joined(const Words& words) {
    std::string line;
    for (const char* word : words) line += std::string(line.empty() ? "" : " ") + word;
    return line;
}

// One row per option: the words, and whether the state then holds what it must.
struct EffectRow {
    Words words;
    std::function<bool(const ViewerState&)> holds;
};

void expectEffects(const std::vector<EffectRow>& rows,
                   const std::function<CommandLine(Words)>& start) {
    for (const EffectRow& row : rows) {
        const CommandLine line = start(row.words);
        EXPECT_EQ(line.outcome, StartUpOutcome::goOn) << joined(row.words);
        EXPECT_EQ(line.firstFile, row.words.size() + 1) << joined(row.words);
        EXPECT_TRUE(row.holds(viewerState)) << joined(row.words);
    }
}

#define HOLDS(condition) [](const ViewerState& s) { return condition; }

TEST_F(OptionEffect, FlagsSetTheirFields) {
    expectEffects(
        {
            {{"-B"}, HOLDS(s.noWinBorder == 1)},
            {{"-K"}, HOLDS(s.lutActive == 1 && s.cineonLog == 1)},
            {{"-S"}, HOLDS(s.sequenceMode == 1)},
            {{"-T"}, HOLDS(s.sequenceDelay == 0)},
            {{"-f"}, HOLDS(s.findFirst == 1)},
            {{"-F"}, HOLDS(s.noRescale == 1)},
            {{"-a"}, HOLDS(s.showAll == 1)},
            {{"-d"}, HOLDS(s.fullScreen == 1)},
            {{"-e"}, HOLDS(s.histogram == 1)},
            {{"-p"}, HOLDS(s.padNum == 1)},
            {{"-c"}, HOLDS(s.inter == 0)},
            {{"-v"}, HOLDS(s.verbose == 1)},
            {{"-z"}, HOLDS(s.loadZ == 0 && s.forceZ == 0)},
            {{"-Z"}, HOLDS(s.forceZ == 1 && s.loadZ == 1)},
            {{"-w"}, HOLDS(s.synchro == 1)},
            {{"-t"}, HOLDS(s.testMode == 1)},
            {{"-N"}, HOLDS(s.oneFile == 1)},
        },
        start);
}

TEST_F(OptionEffect, AWordThatIsNotWhatItsOptionNeedsIsTold) {
    const struct {
        Words words;
        const char* told;
    } rows[] = {
        {{"-m", "x"}, "-m: \"x\" is no whole number from 1 to 8; 1 is used\n"},
        {{"--magnify=9"}, "-m: \"9\" is no whole number from 1 to 8; 8 is used\n"},
        {{"-s", "2.5"}, "-s: \"2.5\" is no whole number from 1 on; 2 is used\n"},
        {{"-l", "-1"}, "-l: \"-1\" is no whole number; 0 is used\n"},
        {{"-g", "2,2"}, "-g: \"2,2\" is no number; 2 is used\n"},
        {{"-k", "all"}, "-k: \"all\" is no number; 0 is used\n"},
        {{"-G", "1.8x"}, "-G: \"1.8x\" is no number; 1.8 is used\n"},
        {{"-n", "1", "x", "1"}, "-n: \"x\" is no whole number; 0 is used\n"},
        {{"-r", "23.976"},
         "-r: \"23.976\" is no frame rate (film, pal, ntsc or a whole number of frames per "
         "second); "
         "23 is used\n"},
        {{"-r", "banana"},
         "-r: \"banana\" is no frame rate (film, pal, ntsc or a whole number of frames per "
         "second); "
         "24 is used\n"},
        {{"-m", "3", "-s", "2", "-l", "4000000000", "-g", ".5", "-k", "-1e3", "-n", "-1", "5", "1",
          "-r", "pal", "-G", "1"},
         ""},
        {{"-r", "12"}, ""},
    };
    for (const auto& row : rows) {
        testing::internal::CaptureStderr();
        start(row.words);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.told);
    }
}

TEST_F(OptionEffect, NumbersAndNamesAreTaken) {
    expectEffects(
        {
            {{"-g", "2.2"}, HOLDS(s.defGamma == 2.2f)},
            {{"-k", "100"}, HOLDS(s.kmem == 90.0f)},
            {{"-k", "0"}, HOLDS(s.kmem == 0.0f)},
            {{"-k", "-1"}, HOLDS(s.kmem == -0.9f)},
            {{"-k", "0.1"}, HOLDS(s.kmem == 0.1f * 0.9f)},
            {{"-s", "3"}, HOLDS(s.rfact == 3)},
            {{"-m", "3"}, HOLDS(s.magnify == 3)},
            {{"-l", "2"}, HOLDS(s.maxLevel == 2)},
            {{"-l", "4000000000"}, HOLDS(s.maxLevel == 4000000000u)},
            {{"-W", "/w"}, HOLDS(s.workDir == "/w")},
            {{"-P", "p"}, HOLDS(s.projectName == "p")},
            {{"-n", "10", "1", "-2"},
             HOLDS(s.firstFrame == 10 && s.currentFrame == 10 && s.lastFrame == 1 &&
                   s.frameStep == -2 && s.animation == 1 && s.inter == 1)},
            {{"-c", "-n", "1", "2", "1"}, HOLDS(s.inter == 1)},
            {{"-n", "1", "2", "1", "-c"}, HOLDS(s.inter == 0)},
            {{"-u", "s.aiff"},
             HOLDS(s.audioFile == "s.aiff" && s.audioOffset == 0 && s.soundOn == 1)},
            {{"-u", "s.aiff", "12"}, HOLDS(s.audioFile == "s.aiff" && s.audioOffset == 12)},
            {{"-u", "s.aiff", "-3"}, HOLDS(s.audioOffset == -3)},
            {{"-u", ""}, HOLDS(s.audioFile == "" && s.soundOn == 0)},
        },
        start);
}

TEST_F(OptionEffect, ZoomAndShrinkAreClamped) {
    expectEffects(
        {
            {{"-m", "0"}, HOLDS(s.magnify == 1)},
            {{"-m", "-5"}, HOLDS(s.magnify == 1)},
            {{"-m", "8"}, HOLDS(s.magnify == 8)},
            {{"-m", "20"}, HOLDS(s.magnify == 8)},
            {{"-m", "x"}, HOLDS(s.magnify == 1)},
            {{"-s", "0"}, HOLDS(s.rfact == 1)},
            {{"-s", "-3"}, HOLDS(s.rfact == 1)},
        },
        start);
}

TEST_F(OptionEffect, AGammaOtherThanOneSwitchesTheLookUpTableOn) {
    expectEffects(
        {
            {{"-g", "1.0"}, HOLDS(s.lutActive == 0)},
            {{"-g", "1.01"}, HOLDS(s.lutActive == 1 && s.cineonLog == 0)},
            {{"-g", "x"}, HOLDS(s.lutActive == 1 && s.defGamma == 0.0f)},
        },
        start);
}

TEST_F(OptionEffect, ThePlayFormatChoosesTheFrameRate) {
    expectEffects(
        {
            {{"-r", "film"}, HOLDS(s.frameRate == 24 && s.startFrameRate == 24)},
            {{"-r", "pal"}, HOLDS(s.frameRate == 25 && s.startFrameRate == 25)},
            {{"-r", "ntsc"}, HOLDS(s.frameRate == 30)},
            {{"-r", "PAL"}, HOLDS(s.frameRate == 24)},
            {{"-r", "12"}, HOLDS(s.frameRate == 12 && s.startFrameRate == 12)},
            {{"-r", "0"}, HOLDS(s.frameRate == 24)},
            {{"-r", "-5"}, HOLDS(s.frameRate == 24)},
            {{"-r", ""}, HOLDS(s.frameRate == 24)},
        },
        start);
}

TEST_F(OptionEffect, WithoutAPlayFormatTheSavedRateHolds) {
    setSavedRate("50");
    start({});
    EXPECT_EQ(viewerState.frameRate, 50);
    EXPECT_EQ(viewerState.startFrameRate, 50);
    start({"-r", "PAL"});
    EXPECT_EQ(viewerState.frameRate, 50);
    start({"-r", "pal"});
    EXPECT_EQ(viewerState.frameRate, 25);
    setSavedRate("fast");
    start({});
    EXPECT_EQ(viewerState.frameRate, 0);
}

TEST_F(OptionEffect, WhatIsNotSupportedShowsABoxAndGoesOn) {
    struct Row {
        Words words;
        Message id;
    };
    const Row rows[] = {
        {{"-D", "-v"}, Message::rVTNoStereo},
        {{"-C", "1", "2", "3", "4", "-v"}, Message::rVTCropFilterNoSupport},
        {{"-R", "hdtv", "-v"}, Message::rVTResNoSupport},
    };
    for (const Row& row : rows) {
        start(row.words);
        EXPECT_EQ(recorder.calls,
                  callsBeforeOptions + "box VisTel: " + messageText(row.id) + "\ndisplay table\n");
        EXPECT_EQ(viewerState.verbose, 1);
    }
}

TEST_F(OptionEffect, TheGammaOfThePlugInsIsAnEnvironmentVariable) {
    platform::setEnvironmentVariable("TAVO_RLA_GAMMA", "");
    start({"-G", "2.25"});
    EXPECT_EQ(platform::environmentVariable("TAVO_RLA_GAMMA"), "2.25");
    EXPECT_EQ(viewerState.defGamma, 1.0f);
}

TEST_F(OptionEffect, TheSequenceDelayTakesNoWord) {
    const CommandLine line = start({"-T", "5"});
    EXPECT_EQ(viewerState.sequenceDelay, 0);
    EXPECT_EQ(line.firstFile, 2u);
}

TEST_F(OptionEffect, TheRangeIsKeptForEveryFile) {
    const CommandLine line = start({"-n", "10", "1", "-2", "name"});
    EXPECT_TRUE(line.rangeGiven);
    EXPECT_EQ(line.range.start, 10);
    EXPECT_EQ(line.range.end, 1);
    EXPECT_EQ(line.range.step, -2);
    EXPECT_FALSE(start({"name"}).rangeGiven);
}

TEST_F(OptionEffect, TheSoundTrackIsOpenedWhenItsOptionIsRead) {
    start({"-u", "s.aiff", "-F"});
    EXPECT_EQ(recorder.calls, callsBeforeOptions + "sound s.aiff\ncheck 40028 1\ndisplay table\n");
    start({"-u", ""});
    EXPECT_EQ(recorder.calls, callsBeforeOptions + "display table\n");
}

std::string filesOf(const CommandLine& line) {
    std::string files;
    for (size_t i = line.firstFile; i < line.words.size(); ++i) files += " " + line.words[i];
    return files;
}

TEST_F(OptionEffect, AWordAfterTheSoundFileThatIsNoIntegerIsTheFirstFile) {
    struct Row {
        Words words;
        const char* files;
    };
    const Row rows[] = {
        {{"-u", "s", "a", "b"}, " a b"},
        {{"-u", "s", "a"}, " a"},
        {{"-us", "a", "b"}, " a b"},
        {{"-u", "s", "5", "a"}, " a"},
        {{"-u", "s", "5.5", "a"}, " 5.5 a"},
        {{"-v", "-u", "s", "a", "b"}, " a b"},
        {{"-u", "s", "--", "-a"}, " -a"},
        {{"-u", "s", "a", "--", "b"}, " a b"},
        // An option after it computes the index anew: the word is lost.
        {{"-u", "s", "a", "-v", "b"}, " b"},
        {{"-u", "s", "a", "-v"}, ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(filesOf(start(row.words)), row.files) << joined(row.words);
}

TEST_F(OptionEffect, FilesBeginAtTheFirstWordThatIsNoOption) {
    EXPECT_EQ(filesOf(start({"-v", "a", "-p", "-n5"})), " a -p -n5");
    EXPECT_EQ(viewerState.padNum, 0);
    EXPECT_EQ(filesOf(start({"--", "-v"})), " -v");
    EXPECT_EQ(filesOf(start({"-v", "--", "-v"})), " -v");
    EXPECT_EQ(filesOf(start({"-"})), " -");
}

TEST_F(OptionEffect, AnUnknownOptionOrAMissingArgumentAsksForTheUsage) {
    struct Row {
        Words words;
        Message id;
        const char* word;
    };
    const Row rows[] = {
        {{"-v", "-Q"}, Message::rVTUnknownOption, "-Q"},
        {{"--verbosely", "-h"}, Message::rVTUnknownOption, "--verbosely"},
        {{"-n", "1", "2"}, Message::rVTMissingArgument, "-n"},
        {{"-C", "1", "2", "3"}, Message::rVTMissingArgument, "-C"},
        {{"-m", "-v"}, Message::rVTMissingArgument, "-m"},
        {{"-W", "--help"}, Message::rVTMissingArgument, "-W"},
        {{"-vQ"}, Message::rVTUnknownOption, "-Q in -vQ"},
        {{"-vm"}, Message::rVTMissingArgument, "-m in -vm"},
        {{"--help=3"}, Message::rVTUnexpectedArgument, "--help=3"},
    };
    for (const Row& row : rows) {
        const CommandLine line = start(row.words);
        EXPECT_EQ(line.outcome, StartUpOutcome::usageWanted) << joined(row.words);
        EXPECT_EQ(line.complaint, formatMessage(row.id, {row.word}));
        EXPECT_EQ(recorder.calls, callsBeforeOptions);
    }
}

TEST_F(OptionEffect, OptionsAfterHelpAreNotLookedAt) {
    EXPECT_EQ(start({"-h", "-Q"}).outcome, StartUpOutcome::helpWanted);
    start({"-h", "-D"});
    EXPECT_EQ(recorder.calls, callsBeforeOptions);
}

}  // namespace
}  // namespace vistel
