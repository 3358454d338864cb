#include "platform/unfinished_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/temporary_folder.h"

using namespace vistel::platform;
using vistel::test::pathOf;
using vistel::test::TemporaryFolder;

namespace {

using Names = std::vector<std::string>;

Names listing(const TemporaryFolder& folder) {
    Names names = listFolder("", folder.path());
    std::sort(names.begin(), names.end());
    return names;
}

std::string contentsOf(const std::string& name) {
    std::ifstream file(pathOf(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeInto(UnfinishedFile& unfinished, const std::string& name, const char* text) {
    const FilePtr file(unfinished.create(name));
    ASSERT_TRUE(file);
    EXPECT_GE(std::fputs(text, file.get()), 0);
}

bool disappears(const std::string& name) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (fileExists(name)) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

}  // namespace

TEST(UnfinishedFiles, TakeThePlaceOfAnother) {
    const TemporaryFolder folder;
    folder.addFile("old", "old");
    for (const char* target : {"old", "nobody's"}) {
        UnfinishedFile unfinished;
        writeInto(unfinished, folder.path("new"), target);
        EXPECT_TRUE(fileExists(folder.path("new")));
        ASSERT_TRUE(unfinished.replace(folder.path(target)));
        EXPECT_EQ(contentsOf(folder.path(target)), target);
    }
    EXPECT_EQ(listing(folder), (Names{"nobody's", "old"}));
}

TEST(UnfinishedFiles, GoWithWhoMakesThem) {
    const TemporaryFolder folder;
    {
        UnfinishedFile unfinished;
        writeInto(unfinished, folder.path("new"), "half");
    }
    EXPECT_EQ(listing(folder), Names{});
}

TEST(UnfinishedFiles, CanBeReadBack) {
    const TemporaryFolder folder;
    UnfinishedFile unfinished;
    const FilePtr file(unfinished.create(folder.path("new")));
    ASSERT_TRUE(file);
    std::fputs("a\nb", file.get());
    ASSERT_TRUE(seekStream(file.get(), 1, SEEK_SET));
    EXPECT_EQ(std::fgetc(file.get()), '\n');
    EXPECT_EQ(std::fgetc(file.get()), 'b');
}

TEST(UnfinishedFiles, GoWhenTheyCannotTakeThePlace) {
    const TemporaryFolder folder;
    folder.addFolder("folder");
    {
        UnfinishedFile unfinished;
        writeInto(unfinished, folder.path("new"), "whole");
        errno = 0;
        EXPECT_FALSE(unfinished.replace(folder.path("folder")));
        EXPECT_NE(errno, 0);
    }
    EXPECT_EQ(listing(folder), Names{"folder"});
}

TEST(UnfinishedFiles, NeverTakeANameThatIsTaken) {
    const TemporaryFolder folder;
    folder.addFile("file", "kept");
    {
        UnfinishedFile unfinished;
        errno = 0;
        EXPECT_EQ(unfinished.create(folder.path("file")), nullptr);
        EXPECT_EQ(errno, EEXIST);
        EXPECT_EQ(unfinished.create(folder.path("missing/file")), nullptr);
        EXPECT_EQ(errno, ENOENT);
        writeInto(unfinished, folder.path("next"), "half");  // it may be tried again
    }
    EXPECT_EQ(contentsOf(folder.path("file")), "kept");
    EXPECT_EQ(listing(folder), Names{"file"});
}

TEST(UnfinishedFiles, GoWhenTheProcessIsToldToEnd) {
    const TemporaryFolder folder;
    const std::string name = folder.path("half");
    const std::string partner = findProgram("pipe_partner").value_or("(no pipe_partner)");
    FILE* pipe =
        openPipe(quotedCommand(partner, "unfinished", "30000 \"" + name + "\" || exit 1"), "r");
    ASSERT_TRUE(pipe);
    EXPECT_EQ(std::fgetc(pipe), 'r');
    EXPECT_TRUE(fileExists(name));
    {
        UnfinishedFile other;
        errno = 0;
        EXPECT_EQ(other.create(name), nullptr);
        EXPECT_EQ(errno, EEXIST) << "another process is at it";
    }
    abandonPipe(pipe);
    EXPECT_TRUE(disappears(name));
}
