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

// Words of a command that makes a file as soon as there is another one, its gate.
struct LateFile {
    std::string gate, file;
    std::string words() const { return "\"" + gate + "\" \"" + file + "\""; }
    void open() const { FilePtr(openFile(gate.c_str(), "w")); }
};

bool appears(const std::string& file, milliseconds patience = promptly) {
    const Clock::time_point end = Clock::now() + patience;
    while (!fileExists(file)) {
        if (Clock::now() > end) return false;
        std::this_thread::sleep_for(milliseconds(20));
    }
    return true;
}

class CommandPipes : public testing::Test {
 protected:
    ~CommandPipes() override {
        for (const LateFile& late : all_) late.open();  // nothing outlives its test for long
    }
    LateFile lateFile(const std::string& name) {
        all_.push_back({folder_.path("gate of " + name), folder_.path(name)});
        return all_.back();
    }
    // Starts what makes the file; it waits at the gate when this returns.
    static FILE* start(const std::string& text, const LateFile& late) {
        FILE* pipe = openPipe(text, "r");
        EXPECT_TRUE(pipe);
        EXPECT_TRUE(appears(late.gate + ".reached"));
        return pipe;
    }
    // An interpreter waits for the program.
    static FILE* startBehindInterpreter(const LateFile& late, const std::string& task = "late") {
        return start(command(task, late.words() + " || exit 1"), late);
    }
    // The command ends at once, and what it has started lives on.
    static FILE* startAndLeave(const LateFile& late, const std::string& task = "late") {
        const std::string partner = findProgram("pipe_partner").value_or("(no pipe_partner)");
        if (!partner.ends_with(".exe"))
            return start(quotedCommand(partner, task, late.words() + " &"), late);
        return start("start /b \"\" \"" + partner + "\" " + task + " " + late.words(), late);
    }
    // What was ended makes nothing when its gate opens.
    static void expectEnded(const LateFile& late) {
        late.open();
        EXPECT_FALSE(appears(late.file, milliseconds(1500)));
    }

 private:
    const TemporaryFolder folder_;
    std::vector<LateFile> all_;
};

// Others that are started and closed for two seconds: with them those that were left are looked
// after. The last one comes when the time is over, however slow the machine is.
void goOn() {
    const Clock::time_point end = Clock::now() + milliseconds(1800);
    for (bool last = false; !last;) {
        last = Clock::now() > end;
        FILE* pipe = openPipe("exit 5", "r");
        ASSERT_TRUE(pipe);
        EXPECT_EQ(closePipe(pipe), 5);
        std::this_thread::sleep_for(milliseconds(100));
    }
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

TEST_F(CommandPipes, AnAbandonedCommandIsEndedWithWhatItHasStarted) {
    const LateFile late = lateFile("late");
    abandonPipe(startBehindInterpreter(late));
    expectEnded(late);
}

TEST_F(CommandPipes, WhatRefusesToEndIsMadeToThoughTheCommandHasEnded) {
    const LateFile late = lateFile("late");
    abandonPipe(startBehindInterpreter(late, "stubborn"));
    goOn();
    expectEnded(late);
}

TEST_F(CommandPipes, WhatLivesOnBehindAnAbandonedCommandIsEnded) {
    const LateFile late = lateFile("late"), stubborn = lateFile("stubborn");
    FILE* pipes[] = {startAndLeave(late), startAndLeave(stubborn, "stubborn")};
    std::this_thread::sleep_for(milliseconds(700));  // the commands themselves have ended
    for (FILE* pipe : pipes) abandonPipe(pipe);
    goOn();
    expectEnded(late);
    expectEnded(stubborn);
}

TEST_F(CommandPipes, WhatLivesOnBehindOthersIsLeftAlone) {
    const LateFile released = lateFile("released"), closed = lateFile("closed"),
                   abandoned = lateFile("abandoned");
    FILE* releasedPipe = startAndLeave(released);
    FILE* closedPipe = startAndLeave(closed);
    FILE* abandonedPipe = startAndLeave(abandoned);
    std::this_thread::sleep_for(milliseconds(700));  // the commands themselves have ended
    EXPECT_EQ(closePipe(closedPipe), 0);
    releasePipe(releasedPipe);
    abandonPipe(abandonedPipe);
    goOn();
    for (const LateFile& late : {released, closed}) {
        late.open();
        EXPECT_TRUE(appears(late.file));
    }
    expectEnded(abandoned);
}

// Each is made to end a second later: whoever waited for that would take longer than it may.
TEST_F(CommandPipes, AbandoningDoesNotWaitForTheEnd) {
    std::vector<FILE*> pipes;
    for (int i = 0; i < 30; ++i)
        pipes.push_back(startBehindInterpreter(lateFile("late" + std::to_string(i)), "stubborn"));
    const Clock::time_point begin = Clock::now();
    for (FILE* pipe : pipes) abandonPipe(pipe);
    EXPECT_LT(Clock::now() - begin, promptly);
}

TEST_F(CommandPipes, AReleasedCommandMayFinish) {
    const LateFile late = lateFile("late");
    releasePipe(startBehindInterpreter(late));
    EXPECT_FALSE(fileExists(late.file));  // nobody waited for it
    late.open();
    EXPECT_TRUE(appears(late.file));
}

TEST_F(CommandPipes, AReleasedCommandHasEndedWhenTheProgramHas) {
    for (const std::string task : {"late", "stubborn"}) {
        const LateFile late = lateFile(task);
        FILE* pipe = openPipe(command("leave", task + " " + late.words()), "r");
        ASSERT_TRUE(pipe);
        EXPECT_EQ(closePipe(pipe), 0);
        ASSERT_TRUE(fileExists(late.gate + ".reached"));
        expectEnded(late);
    }
}

TEST_F(CommandPipes, ReleasedCommandsAreNeverEndedHoweverManyTheyAre) {
    std::vector<LateFile> all;
    for (int i = 0; i < 12; ++i) {
        all.push_back(lateFile("late" + std::to_string(i)));
        releasePipe(startBehindInterpreter(all.back()));
    }
    for (const LateFile& late : all) {
        late.open();
        EXPECT_TRUE(appears(late.file)) << late.file;
    }
}

TEST_F(CommandPipes, OnlyAFewReleasedCommandsLingerUnlessTheUserGoesOn) {
    constexpr int few = 8;
    std::vector<LateFile> all;
    for (int i = 0; i < few + 2; ++i) all.push_back(lateFile("late" + std::to_string(i)));
    const auto release = [&](int i, const std::function<bool()>& goOn) {
        releasePipe(startBehindInterpreter(all[i]), goOn);
    };
    // Whatever other tests have left behind must have ended.
    std::this_thread::sleep_for(milliseconds(500));
    int asked = 0;
    for (int i = 0; i < few; ++i) release(i, [&] { return ++asked > 0; });
    EXPECT_EQ(asked, 0);
    release(few, [&] { return ++asked < 20; });  // goes on without an end
    EXPECT_EQ(asked, 20);
    // Waits until one of them has ended, and one more than a few are left.
    release(few + 1, [&] {
        if (++asked == 40)
            for (int i : {0, 1}) all[i].open();
        return true;
    });
    EXPECT_GT(asked, 40);
    for (const LateFile& late : all) {
        late.open();
        EXPECT_TRUE(appears(late.file)) << late.file;
    }
}

// Whoever waits for the command on another thread meets its end.
TEST_F(CommandPipes, ACommandIsEndedWhileItsOutputIsRead) {
    const LateFile late = lateFile("late");
    FILE* pipe = startBehindInterpreter(late, "stubborn");
    std::thread reader([&] {
        EXPECT_EQ(std::fgetc(pipe), EOF);
        closePipe(pipe);
    });
    endCommand(pipe);
    reader.join();
    expectEnded(late);
    endCommand(pipe);  // it is none any more
}

TEST_F(CommandPipes, WhatACommandPrintsToStandardErrorCanBeDropped) {
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

TEST_F(CommandPipes, WhoWaitsForTheEndCanLeave) {
    FILE* pipe = startBehindInterpreter(lateFile("late"));
    const Clock::time_point begin = Clock::now();
    int asked = 0;
    EXPECT_EQ(closePipe(pipe, [&] { return ++asked < 30; }), -1);
    EXPECT_EQ(asked, 30);
    EXPECT_LT(Clock::now() - begin, promptly);
}

TEST_F(CommandPipes, WaitingForTheEndGivesTheExitStatus) {
    FILE* pipe = openPipe(command("exit", "7"), "r");
    ASSERT_TRUE(pipe);
    EXPECT_EQ(closePipe(pipe, [] { return true; }), 7);
}

TEST_F(CommandPipes, OneThatIsAbandonedDoesNotHoldUpTheNext) {
    const Clock::time_point begin = Clock::now();
    for (int i = 0; i < 6; ++i) {
        FILE* stalled = openPipe(command("halves", longTime), "r");
        ASSERT_TRUE(stalled);
        abandonPipe(stalled);
        FILE* pipe = openPipe(command("exit", "5"), "r");
        ASSERT_TRUE(pipe);
        EXPECT_EQ(closePipe(pipe), 5);
    }
    EXPECT_LT(Clock::now() - begin, promptly);
}

TEST_F(CommandPipes, CommandsOfManyThreadsAtOnceKeepToThemselves) {
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
