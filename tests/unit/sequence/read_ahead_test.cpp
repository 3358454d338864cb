// Frames read ahead: nothing but the time it takes may tell them from frames read when they are
// asked for.

#include "sequence/read_ahead.h"

#include <chrono>
#include <thread>
#include <vector>

#include "iff/result_codes.h"
#include "range_reading.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

using Taken = ReadAhead::Taken;

class Ahead : public SequenceTest {
 protected:
    // A file that has rested since it was written.
    void writeOld(const std::string& name, const std::string& bytes) {
        write(name, bytes);
        age(name, std::chrono::hours(1));
    }
    // Since when; a time to come counts as just now.
    void age(const std::string& name, std::chrono::minutes since) {
        const fs::path file = folder_ / name;
        fs::last_write_time(file, fs::last_write_time(file) - since);
    }
    platform::FileStamp stampOf(const std::string& name) {
        const platform::FilePtr file(platform::openFile(path(name), "r"));
        return platform::fileStamp(file.get()).value_or(platform::FileStamp{});
    }
    Taken take(ReadAhead& ahead, const std::string& name) {
        frame_ = FrameStore{};
        return ahead.take(path(name), request_, stampOf(name), nullptr, frame_);
    }

    ImageLoadRequest request_;
    FrameStore frame_;
};

TEST_F(Ahead, AFrameIsHandedOutOnce) {
    writeOld("a.1", imageForm(7));
    ReadAhead ahead(1, state_.converted);
    ahead.want(path("a.1"), request_);
    EXPECT_EQ(take(ahead, "a.1"), Taken::frame);
    EXPECT_EQ(redOf(frame_), 7);
    EXPECT_EQ(take(ahead, "a.1"), Taken::nothing);
}

TEST_F(Ahead, WhatWasNotWantedIsNotThere) {
    writeOld("a.1", imageForm(7));
    ReadAhead ahead(1, state_.converted);
    EXPECT_EQ(take(ahead, "a.1"), Taken::nothing);
    ahead.want(path("a.1"), request_);
    const ImageLoadRequest before = request_;
    request_.fit.shrink = 2;
    EXPECT_EQ(take(ahead, "a.1"), Taken::nothing);
    request_ = before;
    request_.loadZ = false;
    EXPECT_EQ(take(ahead, "a.1"), Taken::nothing);
    request_ = before;
    EXPECT_EQ(take(ahead, "a.1"), Taken::frame);
}

TEST_F(Ahead, WithoutThreadsNothingIsAhead) {
    writeOld("a.1", imageForm(7));
    ReadAhead ahead(0, state_.converted);
    EXPECT_EQ(ahead.room(), 0u);
    ahead.want(path("a.1"), request_);
    EXPECT_EQ(take(ahead, "a.1"), Taken::nothing);
}

TEST_F(Ahead, FramesThatArePassedOverAreDropped) {
    for (const char* name : {"a.1", "a.2", "a.3"}) writeOld(name, imageForm(name[2] - '0'));
    ReadAhead ahead(2, state_.converted);
    for (const char* name : {"a.1", "a.2", "a.3"}) ahead.want(path(name), request_);
    EXPECT_EQ(take(ahead, "a.2"), Taken::frame);
    EXPECT_EQ(redOf(frame_), 2);
    EXPECT_EQ(take(ahead, "a.1"), Taken::nothing);
    EXPECT_EQ(take(ahead, "a.3"), Taken::frame);
}

TEST_F(Ahead, NoMoreFilesAreHeldThanThereIsRoomFor) {
    ReadAhead ahead(1, state_.converted);
    const auto name = [](size_t number) { return "a." + std::to_string(number); };
    const size_t files = ahead.room() + 2;
    for (size_t i = 1; i <= files; ++i) {
        writeOld(name(i), imageForm(int(i)));
        ahead.want(path(name(i)), request_);
    }
    EXPECT_EQ(take(ahead, name(1)), Taken::nothing);
    EXPECT_EQ(take(ahead, name(2)), Taken::nothing);
    for (size_t i = 3; i <= files; ++i) EXPECT_EQ(take(ahead, name(i)), Taken::frame) << i;
}

TEST_F(Ahead, AFileThatHasChangedSinceIsLeftToWhoAsks) {
    writeOld("a.1", imageForm(7));
    const platform::FileStamp before = stampOf("a.1");
    for (const char* change : {"size", "time"}) {
        writeOld("a.1", imageForm(7));
        ReadAhead ahead(1, state_.converted);
        ahead.want(path("a.1"), request_);
        platform::FileStamp now = stampOf("a.1");
        ++(change[0] == 's' ? now.size : now.modified);
        EXPECT_EQ(ahead.take(path("a.1"), request_, now, nullptr, frame_), Taken::nothing);
    }
    write("a.1", imageForm(8) + imageForm(9));
    EXPECT_NE(stampOf("a.1"), before);
}

TEST_F(Ahead, AFileThatIsBeingWrittenIsLeftToWhoAsks) {
    write("a.1", imageForm(7));
    age("a.1", -std::chrono::hours(1));
    ReadAhead ahead(1, state_.converted);
    ahead.want(path("a.1"), request_);
    EXPECT_EQ(take(ahead, "a.1"), Taken::nothing);
}

TEST_F(Ahead, AFileThatIsWrittenAgainIsLeftToWhoAsks) {
    writeOld("a.1", imageForm(7));
    writeOld("a.2", imageForm(2));
    ReadAhead ahead(1, state_.converted);
    // One thread reads in order: when a.2 is there, a.1 has been read.
    ahead.want(path("a.1"), request_);
    ahead.want(path("a.2"), request_);
    const platform::FileStamp stamp = stampOf("a.2");
    const auto readBy = [&] { return ahead.readSoFar() == 2; };
    while (!readBy()) std::this_thread::yield();
    write("a.1", imageForm(8));  // as large, another time
    age("a.1", std::chrono::minutes(30));
    EXPECT_EQ(take(ahead, "a.1"), Taken::nothing);
    EXPECT_EQ(ahead.take(path("a.2"), request_, stamp, nullptr, frame_), Taken::frame);
}

TEST_F(Ahead, WhoeverWantsToLeaveIsAskedEvenWhenTheFrameIsThere) {
    writeOld("a.1", imageForm(7));
    ReadAhead ahead(1, state_.converted);
    ahead.want(path("a.1"), request_);
    while (ahead.readSoFar() == 0) std::this_thread::yield();
    const auto leave = [] { return false; };
    EXPECT_EQ(ahead.take(path("a.1"), request_, stampOf("a.1"), leave, frame_), Taken::aborted);
    EXPECT_FALSE(frame_.hasPicture());
}

TEST_F(Ahead, WhatIsNotSimplyRightIsLeftToWhoAsks) {
    const std::string form = imageForm(7);
    writeOld("cut.1", form.substr(0, form.size() - 20));
    writeOld("other.1", "no frame file, but long enough to be looked at");
    writeOld("empty.1", "");
    fs::create_directories(folder_ / "folder.1");
    ReadAhead ahead(2, state_.converted);
    for (const char* name : {"cut.1", "other.1", "empty.1", "folder.1", "missing.1"}) {
        ahead.want(path(name), request_);
        EXPECT_EQ(ahead.take(path(name), request_, {}, nullptr, frame_), Taken::nothing) << name;
    }
}

TEST_F(Ahead, TheNumberOfThreadsCanBeSet) {
    const struct {
        const char* text;
        int threads;
    } rows[] = {{"0", 0}, {"1", 1}, {"3", 3}, {"64", 64}};
    for (const auto& row : rows) {
        platform::setEnvironmentVariable("VISTEL_THREADS", row.text);
        EXPECT_EQ(decodingThreads(), row.threads);
    }
    platform::setEnvironmentVariable("VISTEL_THREADS", "");
    EXPECT_NE(decodingThreads(), 1);
}

TEST_F(Ahead, AnotherTextThanANumberOfThreadsIsToldOf) {
    const int own = decodingThreads();
    for (const std::string text : {"4x", "-3", "65"}) {
        platform::setEnvironmentVariable("VISTEL_THREADS", text);
        testing::internal::CaptureStderr();
        EXPECT_EQ(decodingThreads(), own) << text;
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "VISTEL_THREADS: \"" + text + "\" is no number of threads from 0 to 64; " +
                      std::to_string(own) + " is used\n");
    }
}

// --- a whole range -------------------------------------------------------------------------------

class RangeAhead : public Ahead {
 protected:
    void SetUp() override {
        Ahead::SetUp();
        setRange(1, 40, 1);
        state_.sourceOpened = 1;
        state_.openedName = "shot";
        for (int frame = 1; frame <= 40; ++frame) writeFrame(frame);
    }
    void writeFrame(int frame) {
        const std::string name = "shot." + std::to_string(frame), form = imageForm(frame);
        if (missing(frame)) return;
        write(name, cut(frame) ? form.substr(0, form.size() - size_t(frame)) : form);
        age(name, fresh(frame) ? -std::chrono::hours(1) : std::chrono::hours(1));
    }
    static bool missing(int frame) { return frame % 11 == 3; }
    static bool cut(int frame) { return frame % 7 == 4; }
    static bool fresh(int frame) { return frame % 5 == 0; }
    static bool readableAhead(int frame) { return !missing(frame) && !cut(frame) && !fresh(frame); }
};

TEST_F(RangeAhead, IsWhatReadingEachFrameBrings) {
    for (const int step : {1, 3}) {
        const RangeRead expected = readRange(state_, {1, 40, step}, 0);
        EXPECT_EQ(expected.ahead, 0u);
        size_t whole = 0;
        for (int frame = 1; frame <= 40; frame += step) whole += readableAhead(frame);
        for (const int threads : {1, 2, 5}) {
            const RangeRead got = readRange(state_, {1, 40, step}, threads);
            EXPECT_EQ(got.lines, expected.lines) << threads << " threads";
            EXPECT_EQ(got.ahead, whole) << threads << " threads";
        }
    }
}

TEST_F(RangeAhead, ALoadThatTheUserEndsIsAborted) {
    terms_.goOn = [] { return false; };
    for (const int threads : {0, 2}) {
        for (const int frame : {4, 6}) {  // the first one is cut
            ReadAhead ahead(threads, state_.converted);
            terms_.ahead = &ahead;
            wantFrames(state_, {{frame, 7, 8}}, terms_.fit, ahead);
            FrameStore store;
            EXPECT_EQ(readFrame(state_, frame, terms_, store).code, iffAborted) << frame;
            EXPECT_FALSE(store.hasPicture()) << frame;
        }
    }
}

}  // namespace
}  // namespace vistel
