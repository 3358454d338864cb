// Files of other types, converted before they are asked for: frames come and fail as they do when
// each is converted as it is asked for.
#include <chrono>
#include <thread>
#include <vector>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "range_reading.h"
#include "sequence/image_source.h"
#include "sequence/read_ahead.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

using Clock = std::chrono::steady_clock;
using Taken = ReadAhead::Taken;

class ConvertedAhead : public SequenceTest {
 protected:
    void SetUp() override {
        SequenceTest::SetUp();
        childProgram(ChildRole::convert);  // the program stays, its task is in the environment
        converterProgram = [](SourceReader) {
            return std::optional<std::string>(platform::programPath());
        };
        setRange(1, 12, 1);
        state_.sourceOpened = 1;
        state_.openedName = "shot";
    }
    static std::string name(int frame) { return "shot." + std::to_string(frame); }
    void writeFrame(int frame, const char* task, std::chrono::hours age = std::chrono::hours(1)) {
        write(name(frame), foreignFile(task, imageForm(frame)));
        const fs::path file = folder_ / name(frame);
        fs::last_write_time(file, fs::last_write_time(file) - age);
    }
    int conversionsOf(int frame) { return conversions(folder_ / name(frame)); }
    void waitForConversion(int frame) {
        while (conversionsOf(frame) == 0) std::this_thread::yield();
    }
    // Whether the frame comes from the readers.
    Taken take(ReadAhead& ahead, int frame, FrameStore& store) {
        const platform::FilePtr file(platform::openFile(path(name(frame)), "r"));
        return ahead.take(path(name(frame)), {}, *platform::fileStamp(file.get()), nullptr, store);
    }
};

TEST_F(ConvertedAhead, FramesComeFromTheReadersEachConvertedOnce) {
    for (int frame = 1; frame <= 8; ++frame) writeFrame(frame, convert::well);
    const RangeRead range = readRange(state_, {1, 8, 1}, 2);
    EXPECT_EQ(range.ahead, 8u);
    EXPECT_EQ(state_.sourceIsPipe, 1);
    for (int frame = 1; frame <= 8; ++frame) {
        EXPECT_EQ(conversionsOf(frame), 1) << frame;
        EXPECT_TRUE(contains(range.lines[size_t(frame) - 1], ": 0 red " + std::to_string(frame)));
    }
}

TEST_F(ConvertedAhead, ARangeIsWhatConvertingEachFrameBrings) {
    for (int frame = 1; frame <= 12; ++frame) {
        if (frame == 4) continue;
        writeFrame(frame, frame % 3 ? convert::well : convert::andFail,
                   std::chrono::hours(frame % 5 ? 1 : -1));
    }
    write(name(7), "GOODno frame at all, just words");
    const RangeRead expected = readRange(state_, {1, 12, 1}, 0);
    EXPECT_EQ(expected.ahead, 0u);
    for (const int threads : {1, 2, 5}) {
        EXPECT_EQ(readRange(state_, {1, 12, 1}, threads).lines, expected.lines)
            << threads << " threads";
    }
}

TEST_F(ConvertedAhead, ManyConvertersAtOnceDoNotMixTheirOutput) {
    constexpr int files = 8;
    for (int frame = 1; frame <= files; ++frame) writeFrame(frame, convert::well);
    for (int round = 0; round < 2; ++round) {
        ReadAhead ahead(files, state_.converted);
        for (int frame = 1; frame <= files; ++frame) ahead.want(path(name(frame)), {});
        for (int frame = 1; frame <= files; ++frame) {
            FrameStore store;
            ASSERT_EQ(take(ahead, frame, store), Taken::frame) << frame;
            EXPECT_EQ(int(store.colour.data()[0] & 0xFF), frame);
        }
    }
}

TEST_F(ConvertedAhead, AConverterThatFailsIsLeftToWhoAsks) {
    writeFrame(1, convert::andFail);
    ReadAhead ahead(1, state_.converted);
    ahead.want(path(name(1)), {});
    FrameStore store;
    EXPECT_EQ(take(ahead, 1, store), Taken::nothing);
    EXPECT_EQ(conversionsOf(1), 1);
}

TEST_F(ConvertedAhead, AFileThatChangesWhileItIsConvertedIsLeftToWhoAsks) {
    writeFrame(1, convert::well);
    ReadAhead ahead(1, state_.converted);
    ahead.want(path(name(1)), {});
    while (ahead.readSoFar() == 0) std::this_thread::yield();
    writeFrame(1, convert::well, std::chrono::hours(2));
    FrameStore store;
    EXPECT_EQ(take(ahead, 1, store), Taken::nothing);
}

TEST_F(ConvertedAhead, NobodyWaitsForAConverterThatIsNotWantedAnyMore) {
    writeFrame(1, convert::halfAndStall);
    writeFrame(2, convert::andStay);
    writeFrame(3, convert::well);
    const Clock::time_point begin = Clock::now();
    {
        ReadAhead ahead(2, state_.converted);
        for (const int frame : {1, 2}) ahead.want(path(name(frame)), {});
        for (const int frame : {1, 2}) waitForConversion(frame);
        ahead.want(path(name(3)), {});
        FrameStore store;
        EXPECT_EQ(take(ahead, 3, store), Taken::frame);  // drops the two before it
        ahead.want(path(name(1)), {});
    }
    EXPECT_LT(Clock::now() - begin, promptly);
}

TEST_F(ConvertedAhead, OnlyAFewFilesAreConvertedAtOnce) {
    constexpr int files = 8, most = 4;
    for (int frame = 1; frame <= files; ++frame) writeFrame(frame, convert::halfAndStall);
    ReadAhead ahead(files, state_.converted);
    for (int frame = 1; frame <= files; ++frame) ahead.want(path(name(frame)), {});
    const auto running = [&] {
        int sum = 0;
        for (int frame = 1; frame <= files; ++frame) sum += conversionsOf(frame);
        return sum;
    };
    while (running() < most) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    EXPECT_EQ(running(), most);
}

size_t complaints(const std::string& printed) {
    size_t count = 0;
    for (size_t at = 0; (at = printed.find(convert::complaint, at)) != std::string::npos; ++at)
        ++count;
    return count;
}

TEST_F(ConvertedAhead, AConverterComplainsOnceOfEachFile) {
    for (int frame = 1; frame <= 6; ++frame)
        writeFrame(frame, frame % 2 ? convert::well : convert::notBut);
    for (const int threads : {0, 3}) {
        state_.converted->forget();  // all is new
        testing::internal::CaptureStderr();
        for (int pass = 1; pass <= 3; ++pass) (void)readRange(state_, {1, 6, 1}, threads);
        EXPECT_EQ(complaints(testing::internal::GetCapturedStderr()), 3u) << threads << " threads";
    }
}

class ConvertedAgain : public ConvertedAhead {
 protected:
    int read(Retry retry = Retry::never) {
        FrameStore store;
        terms_.retry = retry;
        testing::internal::CaptureStderr();
        result_ = readFrame(state_, 1, terms_, store);
        complaints_ += complaints(testing::internal::GetCapturedStderr());
        picture_ = store.hasPicture();
        return result_.code;
    }
    FrameRead result_;
    size_t complaints_ = 0;
    bool picture_ = false;
};

TEST_F(ConvertedAgain, AFileThatFailedIsNotBeforeItChanges) {
    writeFrame(1, convert::notBut);
    for (int pass = 1; pass <= 3; ++pass) {
        EXPECT_EQ(read(), iffNotIff);
        EXPECT_EQ(result_.name, "shot.1");
        EXPECT_EQ(result_.reason, messageText(Message::rVTNoImage));
    }
    EXPECT_EQ(conversionsOf(1), 1);
    EXPECT_EQ(complaints_, 1u);
    writeFrame(1, convert::well, std::chrono::hours(2));
    EXPECT_EQ(read(), iffOk);
    EXPECT_TRUE(picture_);
    EXPECT_EQ(conversionsOf(1), 2);
}

TEST_F(ConvertedAgain, AFileThatFailedIsWhenTheUserAsksForIt) {
    writeFrame(1, convert::notBut);
    EXPECT_EQ(read(), iffNotIff);
    EXPECT_EQ(read(Retry::asked), iffNotIff);
    EXPECT_EQ(conversionsOf(1), 2);
    EXPECT_EQ(complaints_, 2u);
}

TEST_F(ConvertedAgain, AFileThatFailedIsForAnotherSource) {
    writeFrame(1, convert::notBut);
    EXPECT_EQ(read(), iffNotIff);
    FrameStore frame;
    testing::internal::CaptureStderr();
    EXPECT_EQ(openImageSource(state_, "shot", terms_, false, frame), iffNotIff);
    EXPECT_EQ(complaints(testing::internal::GetCapturedStderr()), 1u);
    EXPECT_EQ(conversionsOf(1), 2);
}

TEST_F(ConvertedAgain, AFileWithAPictureIsWithoutItsComplaint) {
    writeFrame(1, convert::andComplain);
    for (int pass = 1; pass <= 3; ++pass) {
        EXPECT_EQ(read(), iffOk);
        EXPECT_TRUE(picture_);
    }
    EXPECT_EQ(conversionsOf(1), 3);
    EXPECT_EQ(complaints_, 1u);
}

// Another write may leave the same stamp.
TEST_F(ConvertedAgain, AFileThatWasWrittenJustNowIs) {
    writeFrame(1, convert::notBut, std::chrono::hours(0));
    for (int pass = 1; pass <= 2; ++pass) EXPECT_EQ(read(), iffNotIff);
    EXPECT_EQ(conversionsOf(1), 2);
}

TEST_F(ConvertedAhead, AMissingConverterIsLeftToWhoAsks) {
    converterProgram = [](SourceReader) { return std::optional<std::string>(); };
    writeFrame(1, convert::well);
    ReadAhead ahead(1, state_.converted);
    ahead.want(path(name(1)), {});
    FrameStore store;
    EXPECT_EQ(take(ahead, 1, store), Taken::nothing);
}

}  // namespace
}  // namespace vistel
