#include "sequence/source_stream.h"

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "host/messages.h"
#include "sequence/frame_sequence.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

using Streams = SequenceTest;

int closed(OpenedSource& opened) {
    return opened.stream.close([] { return true; });
}

// The output of the converter for a file.
OpenedSource convertedSource(SourceReader reader, const std::string& program, const Tstring& file) {
    OpenedSource opened;
    opened.stream = SourceStream(platform::openFile(file, "r"), false);
    opened.located = file;
    opened.reader = reader;
    opened.program = program;
    EXPECT_TRUE(opened.throughPipe());
    EXPECT_FALSE(opened.stream.isPipe());
    opened.connect();
    EXPECT_TRUE(opened.throughPipe());
    return opened;
}

std::string contents(SourceStream& stream) {
    std::string text;
    char block[512];
    while (const size_t count = std::fread(block, 1, sizeof block, stream.file())) {
        text.append(block, count);
    }
    return text;
}

TEST(SourceReaders, FollowTheFileKind) {
    const struct {
        int kind;
        SourceReader reader;
    } rows[] = {{-1, SourceReader::imageConverter}, {0, SourceReader::imageConverter},
                {1, SourceReader::olderConverter},  {2, SourceReader::olderConverter},
                {3, SourceReader::olderConverter},  {4, SourceReader::direct},
                {5, SourceReader::direct},          {6, SourceReader::direct},
                {7, SourceReader::imageConverter},  {8, SourceReader::olderConverter},
                {9, SourceReader::imageConverter},  {INT_MAX, SourceReader::imageConverter}};
    for (const auto& row : rows) EXPECT_EQ(readerOfKind(row.kind), row.reader) << row.kind;
}

TEST(ConverterCommand, HasTheOptionsOfItsConverterAndOneArgument) {
    const std::string image = converterCommand(SourceReader::imageConverter, "conv", "a b");
    EXPECT_FALSE(contains(image, " -s")) << image;
    EXPECT_TRUE(contains(image, "a b")) << image;
    EXPECT_TRUE(contains(image, " stdout")) << image;
    const std::string older = converterCommand(SourceReader::olderConverter, "conv", "a b");
    EXPECT_TRUE(contains(older, " -s -B ")) << older;
    EXPECT_LT(older.find(" -s -B "), older.find("a b")) << older;
    EXPECT_LT(older.find("a b"), older.find(" stdout")) << older;
    EXPECT_STREQ(converterName(SourceReader::imageConverter), "pixconv");
    EXPECT_STREQ(converterName(SourceReader::olderConverter), "rasconv");
}

TEST_F(Streams, AConverterGetsThePathAsOneArgument) {
    const std::string program = childProgram(ChildRole::printFile);
    for (const SourceReader reader : {SourceReader::imageConverter, SourceReader::olderConverter}) {
        for (const char* name : {"plain", "two words", "it's & $HOME (1)"}) {
            write(name, std::string("content of ") + name);
            OpenedSource opened = convertedSource(reader, program, path(name));
            ASSERT_TRUE(opened.stream) << name;
            EXPECT_TRUE(opened.stream.isPipe());
            EXPECT_EQ(contents(opened.stream), std::string("content of ") + name);
            EXPECT_EQ(closed(opened), 0);
        }
    }
}

TEST_F(Streams, AConvertersFailureIsItsExitStatus) {
    const std::string program = childProgram(ChildRole::fail);
    write("x", "y");
    OpenedSource opened = convertedSource(SourceReader::imageConverter, program, path("x"));
    ASSERT_TRUE(opened.stream);
    EXPECT_EQ(contents(opened.stream), "");
    EXPECT_EQ(closed(opened), 3);
}

TEST_F(Streams, AMissingConverterIsNamedWithTheFile) {
    write("x", "\x02\x4A\x02\x0A");
    converterProgram = [](SourceReader) { return std::optional<std::string>(); };
    const OpenedSource opened = openFrameFile(path("x"), false);
    EXPECT_FALSE(opened.stream);
    EXPECT_EQ(opened.located, path("x"));
    EXPECT_TRUE(contains(opened.complaint, "rasconv")) << opened.complaint;
}

TEST_F(Streams, AFrameFileIsReadAsItIs) {
    write("a.iff", imageForm(1));
    OpenedSource opened = openFrameFile("a.iff", false);
    ASSERT_TRUE(opened.stream);
    EXPECT_FALSE(opened.stream.isPipe());
    EXPECT_EQ(contents(opened.stream), imageForm(1));
}

TEST_F(Streams, AFileOfNoBytesIsAFrameBeingWrittenOnlyWhenItIsWaitedFor) {
    write("empty.iff", "");
    EXPECT_FALSE(openFrameFile("empty.iff", true).stream.isPipe());
    EXPECT_TRUE(openFrameFile("empty.iff", true).stream);
    const OpenedSource opened = openFrameFile("empty.iff", false);
    EXPECT_FALSE(opened.stream);
    EXPECT_EQ(opened.located, fromStartDirectory("empty.iff"));
    EXPECT_EQ(opened.complaint, messageText("s_VistelStrings.rVTNoImage"));
}

// Only some systems have such names.
TEST_F(Streams, ADeviceIsReadAsItIs) {
    if (!fs::exists("/dev/null")) GTEST_SKIP();
    OpenedSource opened = openFrameFile("/dev/null", false);
    EXPECT_TRUE(opened.stream);
    EXPECT_FALSE(opened.stream.isPipe());
    EXPECT_EQ(opened.complaint, "");
}

TEST_F(Streams, ANamedPipeIsOpenedOnce) {
    const std::string pipe = path("pipe.iff");
    if (!fs::exists("/dev/null") || std::system(("mkfifo '" + pipe + "'").c_str()) != 0)
        GTEST_SKIP();
    write("a.iff", imageForm(1));
    const std::string writer = "cat '" + path("a.iff") + "' > '" + pipe + "' &";
    ASSERT_EQ(std::system(writer.c_str()), 0);
    OpenedSource opened = openFrameFile(pipe, false);
    ASSERT_TRUE(opened.stream);
    while (platform::awaitBytes(opened.stream.file(), 10) == 0) {
    }
    EXPECT_EQ(contents(opened.stream), imageForm(1));
}

TEST_F(Streams, AFileThatIsNamedAsStandardInputIsAFile) {
    write("stdin", imageForm(1));
    viewerState.startDirectory.clear();
    OpenedSource opened = openFrameFile("stdin", false);
    ASSERT_TRUE(opened.stream);
    EXPECT_FALSE(opened.stream.isPipe());
}

TEST_F(Streams, AMissingFileGivesTheSystemsError) {
    const OpenedSource opened = openFrameFile("none.iff", false);
    EXPECT_FALSE(opened.stream);
    EXPECT_EQ(opened.systemError, ENOENT);
    EXPECT_EQ(opened.complaint, "");
}

TEST_F(Streams, ACommandFindsTheFramesNumberInItsEnvironment) {
    write("shot.7", "seven");
    const std::string program = childProgram(ChildRole::printFrameFile);
    OpenedSource opened =
        openFrameCommand(platform::quotedCommand(program, path("shot"), "stdout"), 7);
    ASSERT_TRUE(opened.stream);
    EXPECT_EQ(contents(opened.stream), "seven");
    EXPECT_EQ(platform::environmentVariable("FRAME"), "7");
}

TEST_F(Streams, ACommandThatDoesNotExistGivesNothingAndAStatus) {
    testing::internal::CaptureStderr();
    OpenedSource opened = openCommand("no_such_command_here");
    ASSERT_TRUE(opened.stream);
    EXPECT_EQ(contents(opened.stream), "");
    EXPECT_NE(closed(opened), 0);
    testing::internal::GetCapturedStderr();
}

TEST_F(Streams, TheTestOutputIsThatOfTheNamedCommand) {
    write("test.iff", "picture");
    const std::string program = childProgram(ChildRole::printFile);
    platform::setEnvironmentVariable("VTTEST",
                                     platform::quotedCommand(program, path("test.iff"), "stdout"));
    OpenedSource opened = openTestOutput();
    ASSERT_TRUE(opened.stream);
    EXPECT_TRUE(opened.stream.isPipe());
    EXPECT_EQ(contents(opened.stream), "picture");
}

TEST_F(Streams, TheTestOutputIsElseThatOfTheConverterWhereverItIsInstalled) {
    platform::setEnvironmentVariable("VTTEST", "");
    const std::string search = platform::environmentVariable("PATH").value_or("");
    platform::setEnvironmentVariable("PATH", path("nowhere"));
    converterProgram = [](SourceReader reader) {
        EXPECT_EQ(reader, SourceReader::imageConverter);
        return std::optional<std::string>(childProgram(ChildRole::chart));
    };
    OpenedSource opened = openTestOutput();
    EXPECT_EQ(contents(opened.stream), "chart");
    EXPECT_EQ(closed(opened), 0);
    platform::setEnvironmentVariable("PATH", search);
}

TEST_F(Streams, WithoutConverterNoneIsTakenFromTheCurrentFolder) {
    platform::setEnvironmentVariable("VTTEST", "");
    converterProgram = [](SourceReader) { return std::optional<std::string>(); };
    const OpenedSource opened = openTestOutput();
    EXPECT_FALSE(opened.stream);
    EXPECT_EQ(opened.complaint, formatMessage("s_VistelStrings.rVTConverterMissing", {"pixconv"}));
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
