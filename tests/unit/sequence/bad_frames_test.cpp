// Frames that cannot be read, each in its own way: every one is told by its name and a reason, and
// the frame after it is read as if nothing had been.

#include <vector>

#include "iff/result_codes.h"
#include "sequence/image_source.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

std::string group(const std::string& type, const std::string& body) {
    return chunk("FOR4", type + body);
}

std::string header(int width, int height, int compression = 1) {
    return chunk("TBHD", bigEndian(uint32_t(width), 4) + bigEndian(uint32_t(height), 4) +
                             bigEndian(1, 2) + bigEndian(1, 2) + bigEndian(1, 4) + bigEndian(0, 2) +
                             bigEndian(1, 2) + bigEndian(uint32_t(compression), 4));
}

std::string tile(int x1, int y1, int x2, int y2, const std::string& data) {
    std::string corners;
    for (const int corner : {x1, y1, x2, y2}) corners += bigEndian(uint32_t(corner), 2);
    return chunk("RGBA", corners + data);
}

std::string image(const std::string& head, const std::string& tiles) {
    return group("CIMG", head + group("TBMP", tiles));
}

// The size field at an offset set to another value.
std::string resized(std::string bytes, size_t at, uint32_t size) {
    return bytes.replace(at, 4, bigEndian(size, 4));
}

struct BadFrame {
    const char* what;
    std::string bytes;
    int code;
};

std::vector<BadFrame> badFrames() {
    const std::string good = imageForm(9);
    const std::string pixels(12, 'x');
    return {
        {"half a chunk header", good.substr(0, 16), iffPartialIo},
        {"cut in the image header", good.substr(0, 30), iffPartialIo},
        {"cut in the tile", good.substr(0, good.size() - 20), iffPartialIo},
        {"no image header", image("", tile(0, 0, 1, 1, pixels)), iffNoImageHeader},
        {"no width", image(header(0, 4), ""), iffBadImageHeader},
        {"no height", image(header(4, 0), ""), iffBadImageHeader},
        {"a short image header", group("CIMG", chunk("TBHD", "short")), iffBlockTooShort},
        {"a tile outside", image(header(4, 4), tile(3, 3, 4, 4, pixels)), iffBadTiling},
        {"a tile upside down", image(header(4, 4), tile(0, 1, 0, 0, pixels)), iffBadTiling},
        {"too much data", image(header(4, 4), tile(0, 0, 0, 0, pixels)), iffCompression},
        {"a tile larger than its group", resized(good, good.find("RGBA") + 4, 0x1000),
         iffPastBoundary},
        {"a size that is none", resized(good, good.find("TBHD") + 4, 0x90000000), iffBadSize},
        {"a size not yet written", resized(good, good.find("TBHD") + 4, 0x80000001), iffInUse},
        {"a reserved group", group("CIMG", chunk("PATH", "CIMG")), iffNotImplemented},
        {"a property group in an image", group("CIMG", chunk("PRO4", "CIMG")), iffUnexpectedBlock},
        {"an odd end", resized(good, good.find("TBMP") - 4, 9), iffPastBoundary},
        {"planes larger than all memory",
         image(header(0x7FFFFFFF, 0x7FFFFFFF), tile(0, 0, 1, 1, pixels)), iffNoMemory},
    };
}

class BadFrames : public SequenceTest {};

TEST_F(BadFrames, AreToldByNameAndReasonAndTheNextFrameIsRead) {
    setRange(1, 3, 1);
    state_.sourceOpened = 1;
    state_.openedName = "shot";
    write("shot.1", imageForm(1));
    write("shot.3", imageForm(3));
    for (const BadFrame& bad : badFrames()) {
        SCOPED_TRACE(bad.what);
        write("shot.2", bad.bytes);
        for (const int number : {1, 2, 3}) {
            FrameStore frame;
            testing::internal::CaptureStderr();
            const FrameRead read = readFrame(state_, number, terms_, frame);
            EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
            EXPECT_EQ(read.name, "shot." + std::to_string(number));
            EXPECT_EQ(read.code, number == 2 ? bad.code : iffOk);
            EXPECT_EQ(read.reason, number == 2 ? errorText(bad.code) : "");
            if (number != 2) {
                EXPECT_EQ(redOf(frame), number);
            }
        }
    }
}

TEST_F(BadFrames, AsFilesAreReportedOnceAndTheNextFileIsRead) {
    write("good.iff", imageForm(5));
    for (const BadFrame& bad : badFrames()) {
        SCOPED_TRACE(bad.what);
        write("bad.iff", bad.bytes);
        state_.told = {};
        FrameStore frame;
        testing::internal::CaptureStderr();
        EXPECT_EQ(openImageSource(state_, "bad.iff", terms_, false, frame), bad.code);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "bad.iff: " + errorText(bad.code) + "\n");
        state_.sourceOpened = 0;
        testing::internal::CaptureStderr();
        EXPECT_EQ(openImageSource(state_, "bad.iff", terms_, false, frame), bad.code);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        state_.sourceOpened = 0;
        FrameStore next;
        testing::internal::CaptureStderr();
        EXPECT_EQ(openImageSource(state_, "good.iff", terms_, false, next), iffOk);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(redOf(next), 5);
        state_.sourceOpened = 0;
    }
}

}  // namespace
}  // namespace vistel
