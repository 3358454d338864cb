#include "sequence/source_stream.h"

#include <chrono>

#include "stream_contents.h"

namespace vistel {
namespace {

class Streams : public SequenceTest {
 protected:
    SourceStream fileStream() {
        write("a.txt", "words");
        return {platform::openFile(path("a.txt"), "r"), false};
    }
    // The output of this program in a role, with the file as its word.
    SourceStream command(ChildRole role) {
        const std::string program = childProgram(role);
        const std::string line = platform::quotedCommand(program, path("a.txt"), "stdout");
        return {platform::openPipe(line, "r"), true};
    }
};

TEST_F(Streams, AFileIsReadAndItsEndIsNoFailure) {
    SourceStream stream = fileStream();
    ASSERT_TRUE(stream);
    EXPECT_FALSE(stream.isPipe());
    EXPECT_EQ(contents(stream), "words");
    EXPECT_EQ(stream.close({}), 0);
    EXPECT_FALSE(stream);
    EXPECT_EQ(stream.close({}), 0);
}

TEST_F(Streams, AStreamIsHandedOver) {
    SourceStream first = fileStream();
    SourceStream second = std::move(first);
    EXPECT_EQ(first.file(), nullptr);
    EXPECT_EQ(contents(second), "words");
    SourceStream third;
    third = std::move(second);
    EXPECT_TRUE(third);
    EXPECT_FALSE(second);
}

TEST_F(Streams, ACommandsEndIsItsExitStatus) {
    SourceStream first = fileStream();
    SourceStream well = command(ChildRole::printFile);
    ASSERT_TRUE(well);
    EXPECT_TRUE(well.isPipe());
    EXPECT_EQ(contents(well), "words");
    EXPECT_EQ(well.close({}), 0);
    SourceStream badly = command(ChildRole::fail);
    EXPECT_EQ(contents(badly), "");
    EXPECT_EQ(badly.close({}), 3);
}

TEST_F(Streams, NobodyWaitsForACommandThatIsNotWanted) {
    write("a.txt", foreignFile(convert::andStay, "words"));
    const auto begin = std::chrono::steady_clock::now();
    command(ChildRole::convert).release();
    command(ChildRole::convert).abandon();
    SourceStream closed = command(ChildRole::convert);
    EXPECT_EQ(closed.close([] { return false; }), -1);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, promptly);
}

TEST_F(Streams, TheStandardStreamsAreNeverClosed) {
    for (FILE* standard : {stdin, stdout, stderr}) {
        SourceStream stream(standard, false);
        stream.release();
        EXPECT_FALSE(stream);
        EXPECT_GE(platform::streamDescriptor(standard), 0);
    }
    EXPECT_GE(std::fputs("", stdout), 0);
}

}  // namespace
}  // namespace vistel
