#include "platform/files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>

#include "platform/process.h"
#include "platform/temporary_folder.h"

using namespace vistel::platform;
using vistel::test::pathOf;
using vistel::test::TemporaryFolder;

namespace {

std::string contentsOf(const std::string& name) {
    const FilePtr file(openFile(name, "r"));
    if (!file) return "(not opened)";
    std::string contents;
    for (int byte; (byte = std::fgetc(file.get())) != EOF;) contents.push_back(char(byte));
    return contents;
}

std::vector<std::string> sortedListing(const std::string& searchDirectory,
                                       const std::string& folder) {
    std::vector<std::string> names = listFolder(searchDirectory, folder);
    std::sort(names.begin(), names.end());
    return names;
}

using Names = std::vector<std::string>;

// The current directory comes back when a test ends.
class CurrentDirectory {
 public:
    explicit CurrentDirectory(const std::string& folder) : before_(currentDirectory()) {
        EXPECT_TRUE(setCurrentDirectory(folder));
    }
    ~CurrentDirectory() { EXPECT_TRUE(setCurrentDirectory(before_)); }

 private:
    std::string before_;
};

const char* const unusualNames[] = {"with blank.1",
                                    "a&b.1",
                                    "c^d.1",
                                    "(e).1",
                                    "f!.1",
                                    "caf\xC3\xA9.1",
                                    "\xE6\x97\xA5\xE6\x9C\xAC.1",
                                    "\xD0\xBA\xD0\xB0\xD0\xB4\xD1\x80.1"};

}  // namespace

TEST(Files, EveryByteIsWrittenAndReadAsItIs) {
    const TemporaryFolder folder;
    const std::string bytes("\r\n\n\x1A\0\xFF\r", 7);
    {
        const FilePtr file(openFile(folder.path("bytes"), "w"));
        ASSERT_TRUE(file);
        ASSERT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file.get()), bytes.size());
    }
    EXPECT_EQ(contentsOf(folder.path("bytes")), bytes);
    EXPECT_EQ(std::filesystem::file_size(pathOf(folder.path("bytes"))), bytes.size());
}

TEST(Files, AFileOpenedForUpdateKeepsItsContents) {
    const TemporaryFolder folder;
    folder.addFile("file", "abcdef");
    {
        const FilePtr file(openFile(folder.path("file"), "r+"));
        ASSERT_TRUE(file);
        ASSERT_TRUE(seekStream(file.get(), 2, SEEK_SET));
        std::fputs("X\n", file.get());
    }
    EXPECT_EQ(contentsOf(folder.path("file")), "abX\nef");
}

TEST(Files, AFolderIsNeverOpened) {
    const TemporaryFolder folder;
    for (const char* mode : {"r", "r+", "w"}) {
        errno = 0;
        EXPECT_EQ(openFile(folder.path(), mode), nullptr) << mode;
        EXPECT_EQ(errno, EISDIR) << mode;
    }
}

TEST(Files, AMissingFileIsReported) {
    const TemporaryFolder folder;
    errno = 0;
    EXPECT_EQ(openFile(folder.path("missing"), "r"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST(Files, NamesMayHoldBlanksSignsAndAnyScript) {
    const TemporaryFolder folder;
    for (const char* name : unusualNames) {
        const std::string path = folder.path(name);
        EXPECT_FALSE(fileExists(path)) << name;
        {
            const FilePtr file(openFile(path, "w"));
            ASSERT_TRUE(file) << name;
            std::fputs(name, file.get());
        }
        EXPECT_TRUE(fileExists(path)) << name;
        EXPECT_EQ(contentsOf(path), name);
        // The name on the disk is the same text.
        EXPECT_TRUE(std::filesystem::exists(pathOf(path))) << name;
    }
}

TEST(Files, FoldersExistToo) {
    const TemporaryFolder folder;
    EXPECT_TRUE(fileExists(folder.path()));
    EXPECT_FALSE(fileExists(folder.path("missing/file")));
}

TEST(Streams, ARegularFileHasItsSize) {
    const TemporaryFolder folder;
    folder.addFile("file", "12345");
    const FilePtr file(openFile(folder.path("file"), "r"));
    ASSERT_TRUE(file);
    EXPECT_EQ(streamStatus(file.get()).kind, StreamKind::regular);
    EXPECT_EQ(streamStatus(file.get()).size, 5u);
    EXPECT_GT(streamDescriptor(file.get()), 2);
}

TEST(Streams, APipeIsAFifo) {
    FILE* pipe = openPipe("exit 0", "r");
    ASSERT_TRUE(pipe);
    EXPECT_EQ(streamStatus(pipe).kind, StreamKind::fifo);
    closePipe(pipe);
}

// Only some systems have such names.
TEST(NamedPipes, AreOpenedBeforeTheyHaveAWriter) {
    const TemporaryFolder folder;
    const std::string pipe = folder.path("pipe");
    const std::string quoted = "'" + pipe + "'";
    if (!fileExists("/dev/null") || std::system(("mkfifo " + quoted).c_str()) != 0) GTEST_SKIP();
    // It lets go of whoever waits for a writer.
    const std::string late = "(sleep 2; printf abc >" + quoted + ") &";
    ASSERT_EQ(std::system(late.c_str()), 0);
    const auto begin = std::chrono::steady_clock::now();
    const auto seconds = [&] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    };
    const FilePtr file(openFile(pipe, "r"));
    ASSERT_TRUE(file);
    EXPECT_EQ(streamStatus(file.get()).kind, StreamKind::fifo);
    EXPECT_EQ(awaitBytes(file.get(), 0), 0u);
    EXPECT_EQ(awaitBytes(file.get(), 10), 0u);
    EXPECT_LT(seconds(), 1.5);
    while (awaitBytes(file.get(), 10) == 0 && seconds() < 20) {
    }
    char bytes[8] = {};
    EXPECT_EQ(std::fread(bytes, 1, sizeof bytes, file.get()), 3u);
    EXPECT_STREQ(bytes, "abc");
    EXPECT_GE(awaitBytes(file.get(), 10), 1u) << "it has ended";
}

TEST(Files, AreNotHeldByCommandsThatAreStartedMeanwhile) {
    const std::string partner = findProgram("pipe_partner").value_or("(no pipe_partner)");
    for (const char* way : {"r", "r+", "w", "duplicate"}) {
        const TemporaryFolder folder;
        folder.addFile("file", "old");
        folder.addFile("new", "new");
        const std::string name = folder.path("file");
        FilePtr file(openFile(name, way[0] == 'd' ? "r" : way));
        ASSERT_TRUE(file) << way;
        if (way[0] == 'd') file.reset(duplicateStream(file.get()));
        ASSERT_TRUE(file) << way;
        FILE* pipe = openPipe(quotedCommand(partner, "halves", "30000"), "r");
        ASSERT_TRUE(pipe);
        EXPECT_EQ(std::fgetc(pipe), 'f') << "it is running";
        file.reset();
        EXPECT_TRUE(replaceFile(folder.path("new"), name)) << way;
        EXPECT_EQ(contentsOf(name), "new") << way;
        abandonPipe(pipe);
    }
}

TEST(Streams, PositionsGoBeyondFourGigabytes) {
    const TemporaryFolder folder;
    folder.addFile("file", "abc");
    const FilePtr file(openFile(folder.path("file"), "r"));
    ASSERT_TRUE(file);
    ASSERT_TRUE(seekStream(file.get(), int64_t{5} << 30, SEEK_SET));
    EXPECT_EQ(streamPosition(file.get()), int64_t{5} << 30);
    ASSERT_TRUE(seekStream(file.get(), -1, SEEK_END));
    EXPECT_EQ(std::fgetc(file.get()), 'c');
    EXPECT_EQ(streamPosition(file.get()), 3);
    EXPECT_FALSE(seekStream(file.get(), -10, SEEK_SET));
}

TEST(Streams, TheStandardDescriptorsAreTheFirstThree) {
    EXPECT_EQ(streamDescriptor(stdin), 0);
    EXPECT_EQ(streamDescriptor(stdout), 1);
    EXPECT_EQ(streamDescriptor(stderr), 2);
}

TEST(Streams, ADuplicateIsADescriptorOfItsOwn) {
    FILE* copy = duplicateStandardStream(1, "w");
    ASSERT_TRUE(copy);
    EXPECT_GT(streamDescriptor(copy), 2);
    EXPECT_EQ(streamStatus(copy).kind, streamStatus(stdout).kind);
    EXPECT_EQ(std::fclose(copy), 0);
    EXPECT_EQ(streamDescriptor(stdout), 1);
    EXPECT_EQ(duplicateStandardStream(999, "r"), nullptr);
}

TEST(Streams, ATerminalIsACharacterDevice) {
    for (const int descriptor : {0, 1, 2}) {
        EXPECT_TRUE(!isTerminal(descriptor) || isCharacterDevice(descriptor)) << descriptor;
    }
    const TemporaryFolder folder;
    folder.addFile("file");
    const FilePtr file(openFile(folder.path("file"), "r"));
    ASSERT_TRUE(file);
    EXPECT_FALSE(isCharacterDevice(streamDescriptor(file.get())));
    EXPECT_FALSE(isTerminal(streamDescriptor(file.get())));
}

TEST(ReplacedFiles, AreGoneUnderTheirOldName) {
    const TemporaryFolder folder;
    folder.addFile("new", "new");
    folder.addFile("old", "old");
    ASSERT_TRUE(replaceFile(folder.path("new"), folder.path("old")));
    EXPECT_EQ(contentsOf(folder.path("old")), "new");
    EXPECT_EQ(sortedListing("", folder.path()), Names{"old"});
    ASSERT_TRUE(replaceFile(folder.path("old"), folder.path("other"))) << "nobody has the name";
    EXPECT_EQ(contentsOf(folder.path("other")), "new");
}

TEST(ReplacedFiles, StayWhenThereIsNothingToReplaceThemWith) {
    const TemporaryFolder folder;
    folder.addFile("old", "old");
    errno = 0;
    EXPECT_FALSE(replaceFile(folder.path("missing"), folder.path("old")));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(contentsOf(folder.path("old")), "old");
}

TEST(ReplacedFiles, AreNeverFolders) {
    const TemporaryFolder folder;
    folder.addFile("new", "new");
    folder.addFolder("old");
    errno = 0;
    EXPECT_FALSE(replaceFile(folder.path("new"), folder.path("old")));
    EXPECT_NE(errno, 0);
    EXPECT_EQ(contentsOf(folder.path("new")), "new");
}

TEST(Links, LeadToTheFileItself) {
    const TemporaryFolder folder;
    folder.addFile("file");
    std::error_code refused;
    std::filesystem::create_symlink(pathOf("file"), pathOf(folder.path("link")), refused);
    std::filesystem::create_symlink(pathOf("link"), pathOf(folder.path("chain")), refused);
    if (refused) GTEST_SKIP() << "this system gives no links: " << refused.message();
    for (const char* name : {"link", "chain"}) {
        const std::string target = followLinks(folder.path(name)).value_or("(nothing)");
        EXPECT_TRUE(std::filesystem::equivalent(pathOf(target), pathOf(folder.path("file"))));
        EXPECT_EQ(pathOf(target).filename(), "file") << name;
    }
}

TEST(Links, ThatLeadNowhereSaySo) {
    const TemporaryFolder folder;
    std::error_code refused;
    std::filesystem::create_symlink(pathOf("missing"), pathOf(folder.path("lost")), refused);
    std::filesystem::create_symlink(pathOf("b"), pathOf(folder.path("a")), refused);
    std::filesystem::create_symlink(pathOf("a"), pathOf(folder.path("b")), refused);
    if (refused) GTEST_SKIP() << "this system gives no links: " << refused.message();
    errno = 0;
    EXPECT_EQ(followLinks(folder.path("lost")), std::nullopt);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(followLinks(folder.path("a")), std::nullopt);
    EXPECT_EQ(errno, ELOOP);
}

TEST(Links, OtherNamesStayAsTheyAre) {
    const TemporaryFolder folder;
    folder.addFile("file");
    for (const std::string& name : {folder.path("file"), folder.path() + "/./file",
                                    folder.path("missing"), folder.path(), std::string()})
        EXPECT_EQ(followLinks(name), name);
}

TEST(FolderListing, HasTheBareNamesOfFilesAndFolders) {
    const TemporaryFolder folder;
    folder.addFile("shot.1");
    folder.addFile("shot.2");
    folder.addFolder("shot.3");
    folder.addFile("shot.3/inner");
    EXPECT_EQ(sortedListing("", folder.path()), (Names{"shot.1", "shot.2", "shot.3"}));
}

TEST(FolderListing, PutsTheTwoHalvesOfAPathTogether) {
    const TemporaryFolder folder;
    folder.addFolder("sub folder");
    folder.addFile("sub folder/shot.1");
    const Names expected{"shot.1"};
    EXPECT_EQ(sortedListing(folder.path(), "sub folder"), expected);
    EXPECT_EQ(sortedListing(folder.path() + "/", "sub folder"), expected);
    EXPECT_EQ(sortedListing(folder.path("sub folder") + "/", ""), expected);
    EXPECT_EQ(sortedListing("", folder.path("sub folder") + "/"), expected);
}

TEST(FolderListing, OfNoPathIsTheCurrentFolders) {
    const TemporaryFolder folder;
    folder.addFile("shot.1");
    folder.addFolder("sub");
    folder.addFile("sub/shot.2");
    const CurrentDirectory current(folder.path());
    EXPECT_EQ(sortedListing("", ""), (Names{"shot.1", "sub"}));
    EXPECT_EQ(sortedListing("./", ""), (Names{"shot.1", "sub"}));
    EXPECT_EQ(sortedListing("", "sub"), Names{"shot.2"});
    EXPECT_EQ(sortedListing("./", "sub"), Names{"shot.2"});
}

TEST(FolderListing, KeepsNamesOfAnyScript) {
    const TemporaryFolder folder;
    Names expected;
    for (const char* name : unusualNames) {
        folder.addFile(name);
        expected.push_back(name);
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(sortedListing("", folder.path()), expected);
}

TEST(FolderListing, FindsFoldersOfAnyName) {
    const TemporaryFolder folder;
    for (const char* name : unusualNames) {
        folder.addFolder(name);
        folder.addFile(std::string(name) + "/inner");
        EXPECT_EQ(sortedListing(folder.path(), name), Names{"inner"}) << name;
    }
}

TEST(FolderListing, OfAMissingOrEmptyFolderIsEmpty) {
    const TemporaryFolder folder;
    EXPECT_EQ(listFolder("", folder.path("missing")), Names{});
    EXPECT_EQ(listFolder("missing", "missing"), Names{});
    EXPECT_EQ(listFolder("", folder.path()), Names{});
}

TEST(Folders, TheCurrentDirectoryChangesAndIsReported) {
    const TemporaryFolder folder;
    folder.addFolder("caf\xC3\xA9 1");
    folder.addFile("caf\xC3\xA9 1/file", "here");
    {
        const CurrentDirectory current(folder.path("caf\xC3\xA9 1"));
        EXPECT_EQ(contentsOf("file"), "here");
        EXPECT_TRUE(std::filesystem::equivalent(pathOf(currentDirectory()),
                                                pathOf(folder.path("caf\xC3\xA9 1"))));
    }
    EXPECT_FALSE(setCurrentDirectory(folder.path("missing")));
}

TEST(Folders, TheRunningProgramKnowsItsOwnPath) {
    EXPECT_TRUE(fileExists(programPath()));
    EXPECT_NE(programPath().find("test_platform"), std::string::npos);
}

TEST(Paths, OfThisProgramAreAbsolute) {
    EXPECT_TRUE(isAbsolutePath(programPath()));
    EXPECT_TRUE(isAbsolutePath(currentDirectory()));
}

TEST(Paths, AreAbsoluteWhenTheyBeginAtARoot) {
    for (const char* name : {"/", "/a", "//a/b", "/c:"}) EXPECT_TRUE(isAbsolutePath(name)) << name;
    for (const char* name :
         {"", "a", "a/b", "./a", "..", ":", ":a", "1:/a", "ab:/c", "a\\b", "@:\\"})
        EXPECT_FALSE(isAbsolutePath(name)) << name;
    const bool drives = currentDirectory()[0] != '/';
    for (const char* name : {"\\", "\\a", "\\\\server\\share", "c:\\a", "C:/a", "z:", "c:a"})
        EXPECT_EQ(isAbsolutePath(name), drives) << name;
}

TEST(Locale, NumbersKeepTheDecimalPoint) {
    setNativeLocale();
    char text[16];
    std::snprintf(text, sizeof text, "%.1f", 2.5);
    EXPECT_STREQ(text, "2.5");
    EXPECT_EQ(std::strtod("2.5", nullptr), 2.5);
}
