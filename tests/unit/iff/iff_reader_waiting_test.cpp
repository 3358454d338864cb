// Reading a file that is still being written: waiting, giving up, going on.

#include <gtest/gtest.h>

#include "iff/container_walk.h"
#include "platform/clock.h"

namespace vistel {
namespace {

using test::Bytes;

// The other program: after so many waits it writes its next piece; the reader is told to stop after
// `patience` waits.
struct OtherWriter {
    test::TemporaryFile file;
    std::vector<std::pair<int, Bytes>> pieces;  // at which wait, what
    int waits = 0;
    int patience = 1000000;

    bool onWait() {
        ++waits;
        for (const auto& [when, bytes] : pieces) {
            if (when == waits) file.append(bytes);
        }
        return waits < patience;
    }
    void attach(IffReader& root, int retryCount) {
        root.goOn = [this] { return onWait(); };
        root.retryCount = retryCount;
    }
};

TEST(ContainerWaiting, WithoutRetriesTheEndOfTheFileIsTheEnd) {
    OtherWriter writer;
    writer.file.write(Bytes("FOR4"));
    IffReader root;
    writer.attach(root, 0);
    ASSERT_EQ(root.open(writer.file.open()), iffOk);
    EXPECT_EQ(root.next(), iffPartialIo);
    EXPECT_EQ(root.next(), iffIncomplete);
    EXPECT_EQ(writer.waits, 0);
}

TEST(ContainerWaiting, ARetryCountIsSpentInPassesOfAboutASecond) {
    struct Row {
        int retryCount, waits;
    };
    const Row rows[] = {{1, 1001},   {3, 3 * 334}, {10, 1010},   {300, 1200},
                        {600, 1200}, {1000, 2000}, {1001, 1001}, {5000, 5000}};
    for (const Row& row : rows) {
        OtherWriter writer;
        writer.file.write({});
        IffReader root;
        writer.attach(root, row.retryCount);
        ASSERT_EQ(root.open(writer.file.open()), iffOk);
        const uint32_t start = platform::tickMilliseconds();
        EXPECT_EQ(root.next(), iffIncomplete);
        EXPECT_EQ(writer.waits, row.waits) << row.retryCount;
        EXPECT_EQ(platform::tickMilliseconds() - start, static_cast<uint32_t>(row.waits));
    }
}

TEST(ContainerWaiting, EveryByteThatArrivesRenewsThePatience) {
    OtherWriter writer;
    writer.file.write(Bytes("F"));
    const Bytes rest = Bytes("OR4").u32(4).add("CIMG");
    for (size_t i = 0; i < rest.size(); ++i) {
        Bytes byte;
        writer.pieces.emplace_back(static_cast<int>(900 * (i + 1)), byte.u8(rest.data[i]));
    }
    IffReader root;
    writer.attach(root, 1);
    ASSERT_EQ(root.open(writer.file.open()), iffOk);
    EXPECT_EQ(root.next(), iffId("FOR4"));
    EXPECT_EQ(root.groupType(), iffId("CIMG"));
    EXPECT_EQ(writer.waits, 900 * 11);
}

TEST(ContainerWaiting, GivingUpAfterSomeBytesIsPartial) {
    OtherWriter writer;
    writer.file.write(Bytes("FO"));
    writer.pieces.emplace_back(5, Bytes("R4"));
    IffReader root;
    writer.attach(root, 10);
    ASSERT_EQ(root.open(writer.file.open()), iffOk);
    EXPECT_EQ(root.next(), iffPartialIo);
    EXPECT_EQ(writer.waits, 5 + 1010);
}

TEST(ContainerWaiting, ANegativeCountWaitsUntilTheBytesAreThere) {
    OtherWriter writer;
    writer.file.write({});
    writer.pieces.emplace_back(20000, Bytes().header("FOR4", 4));
    writer.pieces.emplace_back(50000, Bytes("CIMG"));
    IffReader root;
    writer.attach(root, -1);
    ASSERT_EQ(root.open(writer.file.open()), iffOk);
    EXPECT_EQ(root.next(), iffId("FOR4"));
    EXPECT_EQ(writer.waits, 50000);
}

TEST(ContainerWaiting, TheWaitIsAbortedOnRequest) {
    for (const int retryCount : {-1, 10}) {
        OtherWriter writer;
        writer.file.write(Bytes("FOR4"));
        writer.patience = 7;
        IffReader root;
        writer.attach(root, retryCount);
        ASSERT_EQ(root.open(writer.file.open()), iffOk);
        EXPECT_EQ(root.next(), iffAborted);
        EXPECT_EQ(writer.waits, 7);
    }
}

TEST(ContainerWaiting, TheSearchForAnEndMarkerIsAbortedToo) {
    OtherWriter writer;
    writer.file.write(Bytes().header("FOR4", 0x80000002).add("CIMG").header("AAAA", 0x80000002));
    writer.patience = 3;
    IffReader root, group;
    writer.attach(root, -1);
    ASSERT_EQ(root.open(writer.file.open()), iffOk);
    ASSERT_GT(root.next(), 0);
    ASSERT_EQ(root.enter(group), iffOk);
    ASSERT_GT(group.next(), 0);
    EXPECT_EQ(group.next(), iffAborted);
}

TEST(ContainerWaiting, AHeaderThatWasMissingIsFoundByAskingAgain) {
    OtherWriter writer;
    writer.file.write(Bytes().header("FOR4", 0x80000001).add("CIMG").chunk("AAAA", "12345"));
    IffReader root, group;
    writer.attach(root, 0);
    ASSERT_EQ(root.open(writer.file.open()), iffOk);
    ASSERT_GT(root.next(), 0);
    ASSERT_EQ(root.enter(group), iffOk);
    ASSERT_EQ(group.next(), iffId("AAAA"));
    EXPECT_EQ(group.next(), iffIncomplete);
    EXPECT_EQ(group.next(), iffIncomplete);
    writer.file.append(Bytes().chunk("BBBB", "1").header("GEND", 0x80000000));
    EXPECT_EQ(group.next(), iffId("BBBB"));
    EXPECT_EQ(group.next(), iffEndOfGroup);
}

TEST(ContainerWaiting, NobodyWaitsForAnotherGroupBehindACompleteOne) {
    OtherWriter writer;
    writer.file.write(Bytes().group("FOR4", "CIMG", {}));
    IffReader root;
    writer.attach(root, -1);
    root.handlers.form = [](IffReader&) { return int{iffBlockIgnored}; };
    EXPECT_EQ(parseWholeFile(root, writer.file.open()), iffOk);
    EXPECT_EQ(writer.waits, 0);
}

}  // namespace
}  // namespace vistel
