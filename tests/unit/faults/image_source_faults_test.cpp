// Allocations, pages, reads, seeks and openings that fail while a frame of an animation is read
// again: the n-th one, for every n until nothing fails any more. The frame has a code and a reason,
// and the frame after it is read as if nothing had been.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "faults/fault_points.h"
#include "iff/every_form.h"
#include "iff/plane_pool.h"
#include "platform/files.h"
#include "sequence/converter.h"
#include "sequence/frame_reader.h"

namespace vistel {
namespace {

using test::Bytes;
using test::FaultSpan;
using test::TemporaryFile;

// A grey picture of 4 x 4 pixels.
Bytes frameOf(uint8_t grey) {
    return test::imageForm(test::header(4, 4, 0),
                           test::tile("RGBA", {0, 0, 3, 3}, Bytes().fill(16, grey)));
}

class SourceFaults : public testing::Test {
 protected:
    void SetUp() override {
        state_.animation = state_.sourceOpened = 1;
        state_.currentFrame = state_.firstFrame = 1;
        state_.lastFrame = 3;
        state_.frameStep = 1;
        state_.startDirectory = platform::currentDirectory();
        state_.openedName = stem_.name();
        for (const int number : {1, 2, 3}) write(number);
        for (const int number : {1, 2, 3}) EXPECT_EQ(read(number), iffOk);  // made once
    }
    void TearDown() override {
        for (const int number : {1, 2, 3}) std::filesystem::remove(nameOf(number));
    }

    std::string nameOf(int number) { return stem_.name() + "." + std::to_string(number); }
    void write(int number) {
        const Bytes bytes = frameOf(static_cast<uint8_t>(number));
        std::ofstream(nameOf(number), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }
    // The code, or 1 when another frame's picture came.
    int read(int number) {
        FrameStore frame;
        FrameRead result = readFrame(state_, number, {}, frame);
        reason_ = std::move(result.reason);
        if (result.code != iffOk) return result.code;
        return !frame.colour.empty() && (frame.colour.data()[0] & 255) == uint32_t(number) ? 0 : 1;
    }

    // How many calls there were to fail.
    int failEach(unsigned kinds, const std::vector<int>& codes) {
        int most = 0;
        for (const FaultSpan span : {FaultSpan::once, FaultSpan::fromThenOn}) {
            bool happened = true;
            for (int n = 1; happened && !HasFailure(); ++n) {
                SCOPED_TRACE(testing::Message() << "n " << n << " span " << int(span));
                happened = failOne(kinds, n, span, codes);
                most = std::max(most, n - 1);
            }
        }
        return most;
    }
    TemporaryFile stem_{std::string()};
    SequenceState state_;
    Tstring reason_;  // of the frame read last

 private:
    bool failOne(unsigned kinds, int n, FaultSpan span, const std::vector<int>& codes) {
        emptyPlanePool();
        const test::AllocationCount count;
        int code = 1;
        bool happened = false;
        {
            const test::Fault fault(kinds, n, span);
            code = read(2);
            happened = fault.happened();
        }
        if (!happened) {
            EXPECT_EQ(code, iffOk);
        } else if (code != iffOk) {
            EXPECT_TRUE(std::find(codes.begin(), codes.end(), code) != codes.end()) << code;
            // Without any memory there is no room for words either.
            const bool speechless = (kinds & test::faultMemory) && span == FaultSpan::fromThenOn;
            EXPECT_TRUE(speechless || !reason_.empty());
        }
        EXPECT_EQ(count.streams(), 0u);
        EXPECT_EQ(read(3), iffOk);
        EXPECT_EQ(reason_, "");
        return happened;
    }
};

TEST_F(SourceFaults, OfMemoryAreNoMemory) {
    EXPECT_GT(failEach(test::faultMemory, {iffNoMemory}), 5);
}

TEST_F(SourceFaults, OfPagesAreNoMemory) {
    EXPECT_EQ(failEach(test::faultPages, {iffNoMemory}), 2);
}

TEST_F(SourceFaults, OfReadsAreAnIncompleteFile) {
    // A file whose kind cannot be read goes to the converter, and that one is not there.
    const auto before =
        std::exchange(converterProgram, [](SourceReader) { return std::optional<std::string>(); });
    EXPECT_GT(failEach(test::faultRead, {iffIncomplete, iffPartialIo, iffNotIff}), 5);
    converterProgram = before;
}

TEST_F(SourceFaults, OfSeeksAreOfNoAccountOrAnIoError) {
    failEach(test::faultSeek, {iffIoError, iffNotIff});
}

TEST_F(SourceFaults, OfOpeningAreAFrameThatIsNotThere) {
    EXPECT_GT(failEach(test::faultOpen, {iffNotIff}), 0);
}

}  // namespace
}  // namespace vistel
