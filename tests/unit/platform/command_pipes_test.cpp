// Commands that are slow, stall or never end, and many at once.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/temporary_folder.h"

using namespace vistel::platform;
using vistel::test::TemporaryFolder;

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds promptly{20'000};
constexpr const char* longTime = "30000";

std::string command(const std::string& task, const std::string& words) {
    const std::string partner = findProgram("pipe_partner").value_or("(no pipe_partner)");
    return quotedCommand(partner, task, words);
}

// A command that makes the file after some time, behind an interpreter that waits for it.
std::string lateFile(const char* milliseconds, const std::string& file) {
    return command("late", std::string(milliseconds) + " \"" + file + "\" || exit 1");
}

bool appears(const std::string& file, milliseconds patience) {
    const Clock::time_point end = Clock::now() + patience;
    while (!fileExists(file)) {
        if (Clock::now() > end) return false;
        std::this_thread::sleep_for(milliseconds(20));
    }
    return true;
}

TEST(AwaitedBytes, AreNoneUntilTheCommandWrites) {
    FILE* pipe = openPipe(command("halves", "700"), "r");
    ASSERT_TRUE(pipe);
    while (awaitBytes(pipe, 1) == 0) {
    }
    char bytes[16] = {};
    ASSERT_EQ(std::fread(bytes, 1, 1, pipe), 1u);
    EXPECT_EQ(awaitBytes(pipe, 0), 4u);  // in the stream's buffer
    ASSERT_EQ(std::fread(bytes, 1, 4, pipe), 4u);
    EXPECT_EQ(awaitBytes(pipe, 0), 0u);
    EXPECT_EQ(awaitBytes(pipe, 20), 0u);
    while (awaitBytes(pipe, 1) == 0) {
    }
    ASSERT_EQ(std::fread(bytes, 1, 6, pipe), 6u);
    EXPECT_STREQ(bytes, "second");
    while (awaitBytes(pipe, 1) == 0) {
    }
    EXPECT_EQ(std::fgetc(pipe), EOF);
    EXPECT_EQ(closePipe(pipe), 0);
}

TEST(AwaitedBytes, AreNeverWaitedForInAFile) {
    const TemporaryFolder folder;
    const FilePtr file(openFile(folder.path("empty"), "w+"));
    ASSERT_TRUE(file);
    EXPECT_GE(awaitBytes(file.get(), 10'000), 1u);
}

TEST(CommandPipes, AnAbandonedCommandIsEndedWithWhatItHasStarted) {
    const TemporaryFolder folder;
    const std::string file = folder.path("late");
    const Clock::time_point begin = Clock::now();
    FILE* pipe = openPipe(lateFile("1500", file), "r");
    ASSERT_TRUE(pipe);
    std::this_thread::sleep_for(milliseconds(500));  // it is running
    abandonPipe(pipe);
    EXPECT_LT(Clock::now() - begin, milliseconds(1400));
    EXPECT_FALSE(appears(file, milliseconds(2500)));
}

// The command ends at once, what it has started makes the file after some time.
std::string fileFromBehind(const std::string& task, const std::string& words) {
    const std::string partner = findProgram("pipe_partner").value_or("(no pipe_partner)");
    if (partner.ends_with(".exe")) return "start /b \"\" \"" + partner + "\" " + task + " " + words;
    return quotedCommand(partner, task, words + " &");
}

// Others that are started and closed meanwhile: with them those that were left are looked after.
void goOnFor(milliseconds time) {
    const Clock::time_point end = Clock::now() + time;
    while (Clock::now() < end) {
        FILE* pipe = openPipe("exit 5", "r");
        ASSERT_TRUE(pipe);
        EXPECT_EQ(closePipe(pipe), 5);
        std::this_thread::sleep_for(milliseconds(100));
    }
}

TEST(CommandPipes, WhatRefusesToEndIsMadeToThoughTheCommandHasEnded) {
    const TemporaryFolder folder;
    const std::string file = folder.path("late");
    FILE* pipe = openPipe(command("stubborn", "3000 \"" + file + "\" || exit 1"), "r");
    ASSERT_TRUE(pipe);
    std::this_thread::sleep_for(milliseconds(500));  // it is running
    abandonPipe(pipe);
    goOnFor(milliseconds(1800));
    EXPECT_FALSE(appears(file, milliseconds(1500)));
}

TEST(CommandPipes, WhatLivesOnBehindAnAbandonedCommandIsEnded) {
    const TemporaryFolder folder;
    std::vector<FILE*> pipes;
    for (const char* task : {"late", "stubborn"}) {
        pipes.push_back(openPipe(fileFromBehind(task, "3500 \"" + folder.path(task) + "\""), "r"));
        ASSERT_TRUE(pipes.back());
    }
    std::this_thread::sleep_for(milliseconds(700));  // the commands themselves have ended
    for (FILE* pipe : pipes) abandonPipe(pipe);
    goOnFor(milliseconds(1800));
    EXPECT_FALSE(appears(folder.path("late"), milliseconds(1600)));
    EXPECT_FALSE(fileExists(folder.path("stubborn")));
}

TEST(CommandPipes, WhatLivesOnBehindOthersIsLeftAlone) {
    const TemporaryFolder folder;
    const auto start = [&](const std::string& name) {
        return openPipe(fileFromBehind("late", "3000 \"" + folder.path(name) + "\""), "r");
    };
    FILE* released = start("released");
    FILE* closed = start("closed");
    FILE* abandoned = start("abandoned");
    ASSERT_TRUE(released && closed && abandoned);
    std::this_thread::sleep_for(milliseconds(700));
    EXPECT_EQ(closePipe(closed), 0);
    releasePipe(released);
    abandonPipe(abandoned);
    goOnFor(milliseconds(1000));
    EXPECT_TRUE(appears(folder.path("released"), milliseconds(20'000)));
    EXPECT_TRUE(appears(folder.path("closed"), milliseconds(20'000)));
    EXPECT_FALSE(fileExists(folder.path("abandoned")));
}

TEST(CommandPipes, AbandoningTakesNoTime) {
    FILE* pipe = openPipe(command("stubborn", std::string(longTime) + " late"), "r");
    ASSERT_TRUE(pipe);
    const Clock::time_point begin = Clock::now();
    abandonPipe(pipe);
    EXPECT_LT(Clock::now() - begin, milliseconds(500));
}

TEST(CommandPipes, AReleasedCommandMayFinish) {
    const TemporaryFolder folder;
    const Clock::time_point begin = Clock::now();
    FILE* pipe = openPipe(lateFile("2000", folder.path("late")), "r");
    ASSERT_TRUE(pipe);
    releasePipe(pipe);
    EXPECT_LT(Clock::now() - begin, milliseconds(1900));
    EXPECT_TRUE(appears(folder.path("late"), milliseconds(20'000)));
}

TEST(CommandPipes, ReleasedCommandsAreNeverEndedHoweverManyTheyAre) {
    const TemporaryFolder folder;
    constexpr int all = 12;
    const auto name = [&](int i) { return folder.path("late" + std::to_string(i)); };
    for (int i = 0; i < all; ++i) {
        FILE* pipe = openPipe(lateFile("3000", name(i)), "r");
        ASSERT_TRUE(pipe);
        releasePipe(pipe);
    }
    for (int i = 0; i < all; ++i) EXPECT_TRUE(appears(name(i), milliseconds(20'000))) << i;
}

TEST(CommandPipes, OnlyAFewReleasedCommandsLingerUnlessTheUserGoesOn) {
    const TemporaryFolder folder;
    constexpr int few = 8;
    const auto name = [&](int i) { return folder.path("late" + std::to_string(i)); };
    const auto release = [&](int i, const char* time, const std::function<bool()>& goOn) {
        FILE* pipe = openPipe(lateFile(time, name(i)), "r");
        ASSERT_TRUE(pipe);
        releasePipe(pipe, goOn);
    };
    // Whatever other tests have left behind must have ended.
    std::this_thread::sleep_for(milliseconds(500));
    int asked = 0;
    for (int i = 0; i < few; ++i) release(i, i == 0 ? "6000" : "9000", [&] { return ++asked > 0; });
    EXPECT_EQ(asked, 0);
    release(few, "9000", [&] { return ++asked < 20; });  // goes on without an end
    EXPECT_EQ(asked, 20);
    EXPECT_FALSE(fileExists(name(0)));
    release(few + 1, "9000", [&] { return ++asked > 0; });
    EXPECT_GT(asked, 40);
    EXPECT_TRUE(fileExists(name(0)));
    for (int i = 0; i < few + 2; ++i) EXPECT_TRUE(appears(name(i), milliseconds(20'000))) << i;
}

TEST(CommandPipes, WhatACommandPrintsToStandardErrorCanBeDropped) {
    const std::string text = command("complain", "\"two words\"");
    const struct {
        CommandErrors errors;
        const char* printed;
    } rows[] = {{CommandErrors::shown, "two words\n"}, {CommandErrors::dropped, ""}};
    for (const auto& row : rows) {
        testing::internal::CaptureStderr();
        FILE* pipe = openPipe(text, "r", row.errors);
        ASSERT_TRUE(pipe);
        char line[64] = {};
        EXPECT_TRUE(std::fgets(line, sizeof line, pipe));
        EXPECT_STREQ(line, "two words\n");  // also to its output
        EXPECT_EQ(closePipe(pipe), 4);
        std::string printed = testing::internal::GetCapturedStderr();
        std::erase(printed, '\r');
        EXPECT_EQ(printed, row.printed);
    }
}

TEST(CommandPipes, WhoWaitsForTheEndCanLeave) {
    const TemporaryFolder folder;
    FILE* pipe = openPipe(lateFile(longTime, folder.path("late")), "r");
    ASSERT_TRUE(pipe);
    const Clock::time_point begin = Clock::now();
    int asked = 0;
    EXPECT_EQ(closePipe(pipe, [&] { return ++asked < 30; }), -1);
    EXPECT_EQ(asked, 30);
    EXPECT_LT(Clock::now() - begin, promptly);
}

TEST(CommandPipes, WaitingForTheEndGivesTheExitStatus) {
    FILE* pipe = openPipe(command("exit", "7"), "r");
    ASSERT_TRUE(pipe);
    EXPECT_EQ(closePipe(pipe, [] { return true; }), 7);
}

TEST(CommandPipes, OneThatIsAbandonedDoesNotHoldUpTheNext) {
    const Clock::time_point begin = Clock::now();
    for (int i = 0; i < 6; ++i) {
        FILE* stalled = openPipe(command("halves", longTime), "r");
        ASSERT_TRUE(stalled);
        abandonPipe(stalled);
        FILE* pipe = openPipe(command("exit", "5"), "r");
        ASSERT_TRUE(pipe);
        EXPECT_EQ(closePipe(pipe), 5);
    }
    EXPECT_LT(Clock::now() - begin, milliseconds(20'000));
}

TEST(CommandPipes, CommandsOfManyThreadsAtOnceKeepToThemselves) {
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([i, &right] {
            for (int round = 0; round < 4; ++round) {
                const std::string word = "thread" + std::to_string(i) + "." + std::to_string(round);
                FILE* pipe = openPipe(command(word, ""), "r");
                char line[64] = {};
                const bool read = pipe && std::fgets(line, sizeof line, pipe);
                right += read && line == word + "\n" && closePipe(pipe) == 0;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 8 * 4);
}

}  // namespace
