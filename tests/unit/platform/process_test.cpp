#include "platform/process.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/temporary_folder.h"

using namespace vistel::platform;
namespace test = vistel::test;
using test::TemporaryFolder;

namespace {

std::string partner() { return findProgram("pipe_partner").value_or("(no pipe_partner)"); }

struct Outcome {
    std::string output;
    int status = 0;
};

Outcome run(const std::string& command) {
    Outcome outcome;
    FILE* pipe = openPipe(command, "r");
    if (!pipe) return {"(no pipe)", -2};
    for (int byte; (byte = std::fgetc(pipe)) != EOF;) outcome.output.push_back(char(byte));
    outcome.status = closePipe(pipe);
    return outcome;
}

std::string allBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) bytes.push_back(char(byte));
    return bytes;
}

}  // namespace

TEST(Pipe, ReadsEveryByteAsItWasWritten) {
    const Outcome outcome = run(quotedCommand(partner(), "bytes", ""));
    EXPECT_EQ(outcome.output, allBytes() + "\r\n" + allBytes());
    EXPECT_EQ(outcome.status, 0);
}

TEST(Pipe, WritesEveryByteAsItIs) {
    FILE* pipe = openPipe(quotedCommand(partner(), "sum", ""), "w");
    ASSERT_TRUE(pipe);
    std::string bytes = allBytes() + "\n";  // the sum of 0 to 255 is 32640, a multiple of 128
    ASSERT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), pipe), bytes.size());
    EXPECT_EQ(closePipe(pipe), 10);
}

TEST(Pipe, ClosingGivesTheExitStatus) {
    for (const int status : {0, 1, 7, 127, 255}) {
        const std::string words = std::to_string(status);
        EXPECT_EQ(run(quotedCommand(partner(), "exit", words)).status, status);
        EXPECT_EQ(run("exit " + words).status, status);
    }
}

TEST(Pipe, AnUnknownCommandGivesNoOutputAndFails) {
    const TemporaryFolder folder;
    const Outcome outcome = run("no_such_command_here 2>\"" + folder.path("messages") + "\"");
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.status, 0);
}

TEST(Pipe, StandardInputOfACommandIsAFifoWhenItIsWrittenTo) {
    const TemporaryFolder folder;
    const std::string output = folder.path("output");
    FILE* pipe = openPipe(quotedCommand(partner(), "kind", ">\"" + output + "\""), "w");
    ASSERT_TRUE(pipe);
    EXPECT_EQ(closePipe(pipe), 0);
    const FilePtr file(openFile(output, "r"));
    ASSERT_TRUE(file);
    char kind[16] = {};
    ASSERT_TRUE(std::fgets(kind, sizeof kind, file.get()));
    EXPECT_STREQ(kind, "fifo");
}

TEST(QuotedCommand, TakesSignsOfTheInterpreterLiterally) {
    const char* const arguments[] = {"plain", "two words", "a&b",         "c^d",   "(e)",
                                     "f!g",   "h;i,j=k",   "l'm",         "$HOME", "`n`",
                                     "#o",    "~",         "p|q>r<s",     "*",     "50%",
                                     "%%1",   "z\xC3\xA9", "\xE6\x97\xA5"};
    for (const char* argument : arguments) {
        EXPECT_EQ(run(quotedCommand(partner(), argument, "one two")).output,
                  std::string(argument) + "\none\ntwo\n");
    }
}

TEST(QuotedCommand, NeedsNoFurtherWords) {
    EXPECT_EQ(run(quotedCommand(partner(), "two words", "")).output, "two words\n");
}

TEST(QuotedCommand, TakesAProgramOfAnyName) {
    const TemporaryFolder folder;
    const std::string original = partner();
    const std::string extension = test::pathOf(original).extension().string();
    for (const char* name : {"two words", "a&b", "(c)", "caf\xC3\xA9", "\xE6\x97\xA5"}) {
        const std::string copy = folder.path(name) + extension;
        std::filesystem::copy_file(test::pathOf(original), test::pathOf(copy));
        EXPECT_EQ(run(quotedCommand(copy, "exit", "5")).status, 5) << name;
    }
}

TEST(FindProgram, LooksBesideTheRunningProgram) {
    const std::string own = programPath();
    const std::optional<std::string> found = findProgram("pipe_partner");
    ASSERT_TRUE(found);
    EXPECT_TRUE(fileExists(*found));
    EXPECT_TRUE(std::filesystem::equivalent(test::pathOf(*found).parent_path(),
                                            test::pathOf(own).parent_path()));
}

TEST(FindProgram, FindsNothingWhereThereIsNothing) {
    EXPECT_FALSE(findProgram("no_such_program_here"));
}

TEST(FindProgram, LooksAlongTheSearchPath) {
    const TemporaryFolder folder;
    const std::string extension = test::pathOf(partner()).extension().string();
    const std::string before = environmentVariable("PATH").value_or("");
    const std::string separator = extension.empty() ? ":" : ";";
    std::filesystem::copy_file(test::pathOf(partner()),
                               test::pathOf(folder.path("vistel_on_path" + extension)));
    EXPECT_FALSE(findProgram("vistel_on_path"));
    setEnvironmentVariable("PATH", folder.path() + separator + before);
    const std::optional<std::string> found = findProgram("vistel_on_path");
    setEnvironmentVariable("PATH", before);
    ASSERT_TRUE(found);
    EXPECT_EQ(run(quotedCommand(*found, "exit", "6")).status, 6);
}

// The pictures' folder is the current one, and what lies there may come from anywhere.
TEST(FindProgram, NeverTakesOneFromTheCurrentFolder) {
    const TemporaryFolder folder;
    const std::string extension = test::pathOf(partner()).extension().string();
    const std::string path = environmentVariable("PATH").value_or(""), here = currentDirectory();
    const std::string separator = extension.empty() ? ":" : ";";
    folder.addFolder("sub");
    for (const char* name : {"vistel_here", "sub/vistel_here"})
        std::filesystem::copy_file(test::pathOf(partner()),
                                   test::pathOf(folder.path(name + extension)));
    ASSERT_TRUE(setCurrentDirectory(folder.path()));
    for (const std::string& relative : {std::string(), std::string("."), std::string("sub")}) {
        for (const std::string& tried :
             {path, relative + separator + path, path + separator + relative,
              path + separator + relative + separator}) {
            setEnvironmentVariable("PATH", tried);
            EXPECT_EQ(findProgram("vistel_here"), std::nullopt) << tried;
        }
    }
    setEnvironmentVariable("PATH", path);
    EXPECT_TRUE(setCurrentDirectory(here));
}

TEST(Environment, AVariableIsSeenHereAndByCommands) {
    EXPECT_FALSE(environmentVariable("VISTEL_NO_SUCH_VARIABLE"));
    for (const char* value : {"12", "two words", "caf\xC3\xA9 \xE6\x97\xA5"}) {
        setEnvironmentVariable("VISTEL_TEST_VARIABLE", value);
        EXPECT_EQ(environmentVariable("VISTEL_TEST_VARIABLE"), value);
        EXPECT_EQ(run(quotedCommand(partner(), "variable", "VISTEL_TEST_VARIABLE")).output, value);
    }
}

TEST(Interrupts, AreNotRequestedByThemselves) {
    catchInterrupts();
    EXPECT_FALSE(interruptRequested());
}
