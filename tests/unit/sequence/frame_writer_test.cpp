#include "sequence/frame_writer.h"

#include <cerrno>
#include <cstring>

#include "iff/result_codes.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

constexpr int width = 70, height = 66;  // two tiles each way

class FrameWriters : public SequenceTest {
 protected:
    void SetUp() override {
        SequenceTest::SetUp();
        state_.loadZ = 1;
    }
    static FrameStore frame(uint32_t flags, bool colour, bool depth) {
        FrameStore made;
        made.width = width;
        made.height = height;
        made.header.flags = flags;
        EXPECT_TRUE(!colour || made.colour.allocate(width, height));
        EXPECT_TRUE(!depth || made.z.allocate(width, height));
        EXPECT_TRUE(!colour || made.colour.complete());
        EXPECT_TRUE(!depth || made.z.complete());
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < width; ++x) {
                if (colour) made.colour.row(y)[x] = uint32_t(x + 256 * y) * 2654435761u;
                if (depth) made.z.row(y)[x] = float(x) - float(y);
            }
        return made;
    }
    static FrameWritten written(const FrameStore& frame, const std::string& path,
                                bool maskInverted = false) {
        FrameWriter writer;
        OutputTarget target;
        target.path = path;
        EXPECT_TRUE(writer.open(target));
        return writer.write(frame, maskInverted);
    }
    FrameStore readBack(const char* name) {
        state_.openedName = name;
        FrameStore back;
        EXPECT_EQ(readFrame(state_, 1, {}, back).code, iffOk);
        return back;
    }
};

TEST_F(FrameWriters, WriteColourAndMask) {
    for (const bool inverted : {false, true}) {
        const FrameStore picture = frame(imageColour | imageMask, true, true);
        EXPECT_EQ(written(picture, "a", inverted).code, iffOk);
        const FrameStore back = readBack("a");
        ASSERT_EQ(back.width, width);
        ASSERT_EQ(back.height, height);
        EXPECT_TRUE(back.header.has(imageMask));
        EXPECT_TRUE(back.z.empty());
        for (size_t i = 0; i < size_t(width) * height; ++i)
            ASSERT_EQ(back.colour.data()[i],
                      picture.colour.data()[i] ^ (inverted ? 0xFF000000 : 0u));
    }
}

TEST_F(FrameWriters, WriteNoMaskWhereThereIsNone) {
    EXPECT_EQ(written(frame(0, true, false), "a").code, iffOk);
    EXPECT_EQ(readBack("a").header.flags & (imageColour | imageMask), uint32_t{imageColour});
}

TEST_F(FrameWriters, WriteTheDepthOfAFrameThatIsNothingElse) {
    const FrameStore picture = frame(imageBlack | imageZ, false, true);
    EXPECT_EQ(written(picture, "a").code, iffOk);
    const FrameStore back = readBack("a");
    ASSERT_FALSE(back.z.empty());
    for (size_t i = 0; i < size_t(width) * height; ++i)
        ASSERT_EQ(back.z.data()[i], picture.z.data()[i]);
}

TEST_F(FrameWriters, LeaveTheTargetUntilTheFileIsWhole) {
    write("a", "what was there");
    {
        FrameWriter writer;
        OutputTarget target;
        target.path = "a";
        ASSERT_TRUE(writer.open(target));
    }
    EXPECT_EQ(fs::file_size("a"), 14u);
    EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), 1);
}

TEST_F(FrameWriters, TellWhyThereIsNoFile) {
    FrameWriter writer;
    OutputTarget target;
    target.path = "no such folder/a";
    EXPECT_FALSE(writer.open(target));
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(FrameWriters, TellThatTheDiskIsFull) {
    if (!platform::fileExists("/dev/full")) GTEST_SKIP() << "no device is always full here";
    const FrameWritten result = written(frame(imageColour, true, false), "/dev/full");
    EXPECT_EQ(result.code, iffIoError);
    EXPECT_EQ(result.reason, std::strerror(ENOSPC));
    EXPECT_TRUE(result.byPlace);
}
}  // namespace
}  // namespace vistel
