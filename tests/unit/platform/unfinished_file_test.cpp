#include "platform/unfinished_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
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

std::string bytesOf(const std::string& name) {
    std::ifstream file(pathOf(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

using Name = UnfinishedFile::Name;
constexpr Name ways[] = {Name::whereNeeded, Name::always};

void writeInto(UnfinishedFile& unfinished, const std::string& target, const std::string& text,
               Name named = Name::whereNeeded) {
    const FilePtr file(unfinished.create(target, named));
    ASSERT_TRUE(file) << std::strerror(errno);
    EXPECT_GE(std::fputs(text.c_str(), file.get()), 0);
}

void replaceBy(const std::string& target, const std::string& text, Name named) {
    UnfinishedFile unfinished;
    writeInto(unfinished, target, text, named);
    ASSERT_TRUE(unfinished.finish()) << std::strerror(errno);
}

std::filesystem::perms permissionsOf(const std::string& name) {
    return std::filesystem::status(pathOf(name)).permissions();
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
    for (const Name named : ways) {
        folder.addFile("old", "old");
        for (const char* target : {"old", "nobody's"}) {
            UnfinishedFile unfinished;
            writeInto(unfinished, folder.path(target), "new", named);
            EXPECT_EQ(bytesOf(folder.path("old")), target[0] == 'o' ? "old" : "new");
            ASSERT_TRUE(unfinished.finish());
            EXPECT_EQ(bytesOf(folder.path(target)), "new");
        }
        EXPECT_EQ(listing(folder), (Names{"nobody's", "old"}));
        std::filesystem::remove(pathOf(folder.path("nobody's")));
    }
}

TEST(UnfinishedFiles, SayWhatTheyAreAndGoWithWhoMakesThem) {
    const TemporaryFolder folder;
    folder.addFile("vistel-unfinished-0.tmp", "somebody else's");
    {
        UnfinishedFile unfinished;
        writeInto(unfinished, folder.path("new"), "half", Name::always);
        EXPECT_EQ(listing(folder), (Names{"vistel-unfinished-0.tmp", "vistel-unfinished-1.tmp"}));
    }
    EXPECT_EQ(listing(folder), Names{"vistel-unfinished-0.tmp"});
    EXPECT_EQ(bytesOf(folder.path("vistel-unfinished-0.tmp")), "somebody else's");
}

TEST(UnfinishedFiles, CanBeReadBack) {
    const TemporaryFolder folder;
    for (const Name named : ways) {
        UnfinishedFile unfinished;
        const FilePtr file(unfinished.create(folder.path("new"), named));
        ASSERT_TRUE(file);
        std::fputs("a\nb", file.get());
        ASSERT_TRUE(seekStream(file.get(), 1, SEEK_SET));
        EXPECT_EQ(std::fgetc(file.get()), '\n');
        EXPECT_EQ(std::fgetc(file.get()), 'b');
    }
}

TEST(UnfinishedFiles, GoWhenTheyCannotTakeThePlace) {
    const TemporaryFolder folder;
    for (const Name named : ways) {
        {
            UnfinishedFile unfinished;
            writeInto(unfinished, folder.path("new"), "whole", named);
            folder.addFolder("new");
            errno = 0;
            EXPECT_FALSE(unfinished.finish());
            EXPECT_NE(errno, 0);
        }
        EXPECT_EQ(listing(folder), Names{"new"});
        std::filesystem::remove(pathOf(folder.path("new")));
    }
}

TEST(UnfinishedFiles, AreNotMadeWhereThereIsNoFolder) {
    const TemporaryFolder folder;
    for (const Name named : ways) {
        UnfinishedFile unfinished;
        errno = 0;
        EXPECT_EQ(unfinished.create(folder.path("missing/file"), named), nullptr);
        EXPECT_EQ(errno, ENOENT);
        writeInto(unfinished, folder.path("next"), "half", named);  // it may be tried again
    }
    EXPECT_EQ(listing(folder), Names{});
}

// Replaced, it would be one name of several that shows the new contents.
TEST(UnfinishedFiles, AreCopiedIntoATargetOfSeveralNames) {
    const TemporaryFolder folder;
    for (const Name named : ways)
        for (const std::string& text : {std::string("new"), std::string(300000, 'n')}) {
            folder.addFile("old", std::string(1000, 'o'));
            std::filesystem::create_hard_link(pathOf(folder.path("old")),
                                              pathOf(folder.path("same")));
            replaceBy(folder.path("old"), text, named);
            EXPECT_EQ(bytesOf(folder.path("old")), text);
            EXPECT_EQ(bytesOf(folder.path("same")), text);
            EXPECT_EQ(listing(folder), (Names{"old", "same"}));
            std::filesystem::remove(pathOf(folder.path("same")));
        }
}

TEST(UnfinishedFiles, HandOnThePermissionsOfTheirTarget) {
    const TemporaryFolder folder;
    using std::filesystem::perms;
    for (const Name named : ways)
        for (const perms wanted :
             {perms::owner_read | perms::owner_write,
              perms::owner_read | perms::owner_write | perms::group_exec, perms::all}) {
            folder.addFile("old");
            std::filesystem::permissions(pathOf(folder.path("old")), wanted);
            const perms before = permissionsOf(folder.path("old"));
            replaceBy(folder.path("old"), "new", named);
            EXPECT_EQ(permissionsOf(folder.path("old")), before);
        }
}

TEST(UnfinishedFiles, CannotBeReadByOthersBeforeTheTargetCan) {
    const TemporaryFolder folder;
    folder.addFile("old");
    using std::filesystem::perms;
    const perms owner = perms::owner_read | perms::owner_write;
    std::filesystem::permissions(pathOf(folder.path("old")), owner);
    if (permissionsOf(folder.path("old")) != owner) GTEST_SKIP() << "no such permissions here";
    UnfinishedFile unfinished;
    writeInto(unfinished, folder.path("old"), "half", Name::always);
    EXPECT_EQ(permissionsOf(folder.path("vistel-unfinished-0.tmp")), owner);
}

TEST(UnfinishedFiles, HaveThePermissionsOfAnyNewFile) {
    const TemporaryFolder folder;
    folder.addFile("usual");
    for (const Name named : ways) {
        replaceBy(folder.path("new"), "new", named);
        EXPECT_EQ(permissionsOf(folder.path("new")), permissionsOf(folder.path("usual")));
        std::filesystem::remove(pathOf(folder.path("new")));
    }
}

TEST(UnfinishedFiles, GoWhenTheProcessIsToldToEnd) {
    const TemporaryFolder folder;
    const std::string name = folder.path("vistel-unfinished-0.tmp");
    const std::string partner = findProgram("pipe_partner").value_or("(no pipe_partner)");
    FILE* pipe = openPipe(
        quotedCommand(partner, "unfinished", "30000 \"" + folder.path("half") + "\" || exit 1"),
        "r");
    ASSERT_TRUE(pipe);
    EXPECT_EQ(std::fgetc(pipe), 'r');
    EXPECT_TRUE(fileExists(name));
    {
        UnfinishedFile other;  // another process is at it
        writeInto(other, folder.path("half"), "other", Name::always);
        EXPECT_TRUE(fileExists(folder.path("vistel-unfinished-1.tmp")));
    }
    abandonPipe(pipe);
    EXPECT_TRUE(disappears(name));
}
