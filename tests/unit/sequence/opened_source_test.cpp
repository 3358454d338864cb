#include "sequence/opened_source.h"

#include <cerrno>
#include <cstdlib>

#include "host/messages.h"
#include "sequence/frame_listing.h"
#include "stream_contents.h"

namespace vistel {
namespace {

int closed(OpenedSource& opened) {
    return opened.stream.close([] { return true; });
}

class Opened : public SequenceTest {
 protected:
    // The output of the converter for a file.
    OpenedSource converted(SourceReader reader, const std::string& program, const Tstring& file) {
        OpenedSource opened;
        opened.stream = SourceStream(platform::openFile(file, "r"), false);
        opened.located = file;
        opened.reader = reader;
        opened.program = program;
        EXPECT_TRUE(opened.throughPipe());
        EXPECT_FALSE(opened.stream.isPipe());
        opened.connect(*state_.converted);
        EXPECT_TRUE(opened.throughPipe());
        return opened;
    }
};

TEST_F(Opened, AConverterGetsThePathAsOneArgument) {
    const std::string program = childProgram(ChildRole::printFile);
    for (const SourceReader reader : {SourceReader::imageConverter, SourceReader::olderConverter}) {
        for (const char* name : {"plain", "two words", "it's & $HOME (1)"}) {
            write(name, std::string("content of ") + name);
            OpenedSource opened = converted(reader, program, path(name));
            ASSERT_TRUE(opened.stream) << name;
            EXPECT_TRUE(opened.stream.isPipe());
            EXPECT_EQ(contents(opened.stream), std::string("content of ") + name);
            EXPECT_EQ(closed(opened), 0);
        }
    }
}

TEST_F(Opened, AConvertersFailureIsItsExitStatus) {
    const std::string program = childProgram(ChildRole::fail);
    write("x", "y");
    OpenedSource opened = converted(SourceReader::imageConverter, program, path("x"));
    ASSERT_TRUE(opened.stream);
    EXPECT_EQ(contents(opened.stream), "");
    EXPECT_EQ(closed(opened), 3);
}

TEST_F(Opened, AMissingConverterIsNamedWithTheFile) {
    write("x", "\x02\x4A\x02\x0A");
    converterProgram = [](SourceReader) { return std::optional<std::string>(); };
    const OpenedSource opened = openFrameFile(state_, path("x"), false);
    EXPECT_FALSE(opened.stream);
    EXPECT_EQ(opened.located, path("x"));
    EXPECT_TRUE(contains(opened.complaint, "rasconv")) << opened.complaint;
}

TEST_F(Opened, AFrameFileIsReadAsItIs) {
    write("a.iff", imageForm(1));
    OpenedSource opened = openFrameFile(state_, "a.iff", false);
    ASSERT_TRUE(opened.stream);
    EXPECT_FALSE(opened.stream.isPipe());
    EXPECT_EQ(contents(opened.stream), imageForm(1));
}

TEST_F(Opened, AFileOfNoBytesIsAFrameBeingWrittenOnlyWhenItIsWaitedFor) {
    write("empty.iff", "");
    EXPECT_FALSE(openFrameFile(state_, "empty.iff", true).stream.isPipe());
    EXPECT_TRUE(openFrameFile(state_, "empty.iff", true).stream);
    const OpenedSource opened = openFrameFile(state_, "empty.iff", false);
    EXPECT_FALSE(opened.stream);
    EXPECT_EQ(opened.located, fromStartDirectory(state_.startDirectory, "empty.iff"));
    EXPECT_EQ(opened.complaint, messageText(Message::rVTNoImage));
}

// Only some systems have such names.
TEST_F(Opened, ADeviceIsReadAsItIs) {
    if (!fs::exists("/dev/null")) GTEST_SKIP();
    OpenedSource opened = openFrameFile(state_, "/dev/null", false);
    EXPECT_TRUE(opened.stream);
    EXPECT_FALSE(opened.stream.isPipe());
    EXPECT_EQ(opened.complaint, "");
}

TEST_F(Opened, ANamedPipeIsOpenedOnce) {
    const std::string pipe = path("pipe.iff");
    if (!fs::exists("/dev/null") || std::system(("mkfifo '" + pipe + "'").c_str()) != 0)
        GTEST_SKIP();
    write("a.iff", imageForm(1));
    const std::string writer = "cat '" + path("a.iff") + "' > '" + pipe + "' &";
    ASSERT_EQ(std::system(writer.c_str()), 0);
    OpenedSource opened = openFrameFile(state_, pipe, false);
    ASSERT_TRUE(opened.stream);
    while (platform::awaitBytes(opened.stream.file(), 10) == 0) {
    }
    EXPECT_EQ(contents(opened.stream), imageForm(1));
}

TEST_F(Opened, AFileThatIsNamedAsStandardInputIsAFile) {
    write("stdin", imageForm(1));
    state_.startDirectory.clear();
    OpenedSource opened = openFrameFile(state_, "stdin", false);
    ASSERT_TRUE(opened.stream);
    EXPECT_FALSE(opened.stream.isPipe());
}

TEST_F(Opened, AMissingFileGivesTheSystemsError) {
    const OpenedSource opened = openFrameFile(state_, "none.iff", false);
    EXPECT_FALSE(opened.stream);
    EXPECT_EQ(opened.systemError, ENOENT);
    EXPECT_EQ(opened.complaint, "");
}

TEST_F(Opened, ACommandFindsTheFramesNumberInItsEnvironment) {
    write("shot.7", "seven");
    const std::string program = childProgram(ChildRole::printFrameFile);
    OpenedSource opened =
        openFrameCommand(platform::quotedCommand(program, path("shot"), "stdout"), 7);
    ASSERT_TRUE(opened.stream);
    EXPECT_EQ(contents(opened.stream), "seven");
    EXPECT_EQ(platform::environmentVariable("FRAME"), "7");
}

TEST_F(Opened, ACommandThatDoesNotExistGivesNothingAndAStatus) {
    testing::internal::CaptureStderr();
    OpenedSource opened = openCommand("no_such_command_here");
    ASSERT_TRUE(opened.stream);
    EXPECT_EQ(contents(opened.stream), "");
    EXPECT_NE(closed(opened), 0);
    testing::internal::GetCapturedStderr();
}

TEST_F(Opened, TheTestOutputIsThatOfTheNamedCommand) {
    write("test.iff", "picture");
    const std::string program = childProgram(ChildRole::printFile);
    platform::setEnvironmentVariable("VTTEST",
                                     platform::quotedCommand(program, path("test.iff"), "stdout"));
    OpenedSource opened = openTestOutput();
    ASSERT_TRUE(opened.stream);
    EXPECT_TRUE(opened.stream.isPipe());
    EXPECT_EQ(contents(opened.stream), "picture");
}

TEST_F(Opened, TheTestOutputIsElseThatOfTheConverterWhereverItIsInstalled) {
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

TEST_F(Opened, WithoutConverterNoneIsTakenFromTheCurrentFolder) {
    platform::setEnvironmentVariable("VTTEST", "");
    converterProgram = [](SourceReader) { return std::optional<std::string>(); };
    const OpenedSource opened = openTestOutput();
    EXPECT_FALSE(opened.stream);
    EXPECT_EQ(opened.complaint, formatMessage(Message::rVTConverterMissing, {"pixconv"}));
}

}  // namespace
}  // namespace vistel
