// Allocations, writes, seeks and openings that fail while a file is written: the n-th one, for
// every n until nothing fails any more. The writer says so, gives everything back and can be used
// again.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "faults/fault_points.h"
#include "faults/one_file.h"
#include "iff/iff_writer.h"
#include "iff/image_writer.h"
#include "iff/plane_pool.h"

namespace vistel {
namespace {

using test::FaultSpan;
using test::OneFile;

constexpr uint32_t width = 70, height = 66;

struct Destination {
    const char* name;
    bool byName, pipe;
};
constexpr Destination destinations[] = {
    {"a file by name", true, false}, {"an open file", false, false}, {"a pipe", false, true}};

int openOn(ImageWriter& writer, const std::string& name, const Destination& to) {
    if (to.byName) return writer.open(name);
    FILE* const stream = platform::openFile(name, "w");
    return writer.openStream(stream, to.pipe);
}

// The rows exist before anything fails: this client itself allocates nothing.
struct Picture {
    Picture() {
        for (uint32_t y = 0; y < height; ++y)
            for (uint32_t x = 0; x < width; ++x) {
                colour[y][x] = test::planePixel(test::samplePixel(x, y));
                z[y][x] = test::sampleDepth(x, y);
            }
    }
    uint32_t colour[height][width];
    float z[height][width];
};
const Picture picture;

int writeImage(ImageWriter& writer, uint32_t flags) {
    if (int code = writer.writeText("NAME", "a picture"); code != iffOk) return code;
    if (int code = writer.writeHeader(width, height, flags); code != iffOk) return code;
    if (int code = writer.beginImageData(); code != iffOk) return code;
    for (uint32_t y = 0; y < height; ++y) {
        const float* z = flags & imageZ ? picture.z[y] : nullptr;
        if (int code = writer.writeScanline(picture.colour[y], z); code != iffOk) return code;
    }
    return writer.endImage();
}

// Two images in one file, as a client writes them: up to the first failure, and then closed.
int writeFile(ImageWriter& writer, const std::string& name, const Destination& to) {
    int code = openOn(writer, name, to);
    if (code == iffOk) code = writeImage(writer, imageColour | imageMask | imageZ);
    if (code == iffOk) code = writer.nextImage();
    if (code == iffOk) code = writeImage(writer, imageColour);
    const int closed = writer.close();
    return code == iffOk ? closed : code;
}

struct WriteOutcome {
    int code = iffOk;
    bool failed = false;              // the fault happened
    const char* complaint = nullptr;  // what is wrong whatever happened
};

WriteOutcome writeWithFault(OneFile& file, const Destination& to, unsigned kinds, int n,
                       FaultSpan span) {
    WriteOutcome outcome;
    ImageWriter writer;
    {
        const test::Fault fault(kinds, n, span);
        outcome.code = writeFile(writer, file.name(), to);
        outcome.failed = fault.happened();
        writer.close();
    }
    if (writeFile(writer, file.name(), to) != iffOk) outcome.complaint = "cannot be used again";
    if (file.load({.name = ""}) != iffOk || file.forms != 2) outcome.complaint = "is not read";
    return outcome;
}

WriteOutcome countedWrite(OneFile& file, const Destination& to, unsigned kinds, int n, FaultSpan span) {
    emptyPlanePool();
    const test::AllocationCount count;
    WriteOutcome outcome = writeWithFault(file, to, kinds, n, span);
    emptyPlanePool();
    if (count.blocks() > 0) outcome.complaint = "memory is lost";
    if (count.streams() > 0) outcome.complaint = "a stream stays open";
    return outcome;
}

// Lets each call of these kinds fail in turn. How many there were.
int failEach(unsigned kinds, int expected) {
    int most = 0;
    OneFile file;
    for (const Destination& to : destinations)
        for (const FaultSpan span : {FaultSpan::once, FaultSpan::fromThenOn})
            for (int n = 1; !testing::Test::HasFailure(); ++n) {
                SCOPED_TRACE(testing::Message() << to.name << " n " << n << " span " << int(span));
                const WriteOutcome outcome = countedWrite(file, to, kinds, n, span);
                EXPECT_STREQ(outcome.complaint, nullptr);
                EXPECT_EQ(outcome.code, outcome.failed ? expected : iffOk);
                if (!outcome.failed) break;
                most = std::max(most, n);
            }
    return most;
}

class WritingFaults : public testing::Test {
 protected:
    void SetUp() override {  // what is made once is made
        OneFile file;
        ImageWriter writer;
        ASSERT_EQ(writeFile(writer, file.name(), destinations[0]), iffOk);
        ASSERT_EQ(file.load({.name = ""}), iffOk);
    }
};

TEST_F(WritingFaults, OfMemoryAreNoMemory) {
    EXPECT_GT(failEach(test::faultMemory, iffNoMemory), 5);
}

TEST_F(WritingFaults, OfMemoryInTheContainerAloneAreNoMemory) {
    const test::TemporaryFile file;
    const std::optional<std::string> noFormat;
    int failures = 0;
    for (bool failed = true; failed && !HasFailure(); ++failures) {
        IffWriter writer;
        int code = iffOk;
        {
            const test::Fault fault(test::faultMemory, failures + 1);
            code = writer.open(file.name(), noFormat);
            failed = fault.happened();
        }
        EXPECT_EQ(code, failed ? iffNoMemory : iffOk);
        EXPECT_EQ(writer.isOpen(), !failed);
        EXPECT_EQ(writer.name(), failed ? "" : file.name());
    }
    EXPECT_GT(failures, 2);
}

TEST_F(WritingFaults, OfWritesAreAnIoError) {
    EXPECT_GT(failEach(test::faultWrite, iffIoError), 60);
}

TEST_F(WritingFaults, OfSeeksAreAnIoError) {
    // Two for each group; a pipe has none.
    EXPECT_EQ(failEach(test::faultSeek, iffIoError), 8);
}

TEST_F(WritingFaults, OfOpeningAreAnIoError) {
    EXPECT_EQ(failEach(test::faultOpen, iffIoError), 1);
}

}  // namespace
}  // namespace vistel
