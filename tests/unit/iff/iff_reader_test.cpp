// The reader's steps from chunk to chunk.

#include <gtest/gtest.h>

#include "iff/container_walk.h"
#include "platform/process.h"

namespace vistel {
namespace {

using test::Bytes;
using test::Container;
using test::Inside;
using test::id;

TEST(ContainerReader, AnOpenedRootHasReadNothing) {
    Container c(Bytes().group("FOR4", "CIMG", {}));
    ASSERT_EQ(c.opened, iffOk);
    EXPECT_EQ(c.root.flags(), uint32_t{iffFlagReading});
    EXPECT_EQ(c.root.position(), 0u);
    EXPECT_EQ(c.root.consumed(), 0u);
    EXPECT_EQ(c.root.depth(), 0u);
    EXPECT_EQ(c.root.chunkId(), 0);
    EXPECT_EQ(c.root.chunkSize(), 0u);
    EXPECT_EQ(c.root.groupEnd(), 0xFFFFFFF0u);
    EXPECT_EQ(c.root.parent(), nullptr);
    EXPECT_EQ(c.root.fileSize(), 12u);
    EXPECT_EQ(c.root.streamBytesLeft(), 12u);
}

TEST(ContainerReader, APipeIsReadAsAStream) {
    FILE* pipe = platform::openPipe("echo FOR4", "r");
    ASSERT_NE(pipe, nullptr);
    IffReader root;
    root.retryCount = -1;  // nobody waits for a pipe that has ended
    ASSERT_EQ(root.open(pipe), iffOk);
    EXPECT_EQ(root.flags(), uint32_t{iffFlagReading | iffFlagStream});
    EXPECT_EQ(root.streamBytesLeft(), UINT64_MAX);
    EXPECT_EQ(root.next(), iffBrokenPipe);
    platform::closePipe(pipe);
}

TEST(ContainerReader, AGroupIsReadWithItsTypeAndFlags) {
    struct Row {
        const char* kind;
        uint32_t flags;
    };
    const Row rows[] = {
        {"FOR4", 0x100 | 0x400}, {"FORM", 0x100 | 0x400}, {"FOR8", 0x100 | 0x400},
        {"CAT4", 0x100 | 0x800}, {"CAT ", 0x100 | 0x800}, {"CAT8", 0x100 | 0x800},
        {"LIS4", 0x1300},        {"LIST", 0x1300},        {"LIS8", 0x1300},
    };
    for (const Row& row : rows) {
        Container c(Bytes().group(row.kind, "CIMG", Bytes("12345678")));
        EXPECT_EQ(test::idText(c.root.next()), row.kind);
        EXPECT_EQ(c.root.groupType(), id("CIMG"));
        EXPECT_EQ(c.root.chunkSize(), 12u);
        EXPECT_EQ(c.root.consumed(), 4u);
        EXPECT_EQ(c.root.position(), 12u);
        EXPECT_EQ(c.root.flags(), row.flags | iffFlagReading) << row.kind;
    }
}

TEST(ContainerReader, ChunksAreFoundBehindTheirPadBytes) {
    struct Row {
        const char* kind;
        size_t alignment;
    };
    for (const Row& row :
         {Row{"FOR4", 4}, Row{"FORM", 2}, Row{"FOR8", 8}, Row{"CAT ", 2}, Row{"LIS8", 8}}) {
        Bytes body;
        body.chunk("AAAA", "", row.alignment).chunk("BBBB", "1", row.alignment);
        body.chunk("CCCC", "12", row.alignment).chunk("DDDD", "123456789", row.alignment);
        body.chunk("EEEE", "12345678", row.alignment);
        for (const bool read : {true, false}) {
            Container c(Bytes().group(row.kind, "TEST", body));
            c.diary.readBodies = read;
            EXPECT_EQ(c.walk(), iffEndOfGroup);
            EXPECT_EQ(c.diary.text, row.kind + std::string(":TEST(") +
                                        (read ? "AAAA= BBBB=1 CCCC=12 DDDD=123456789 EEEE=12345678)"
                                              : "AAAA= BBBB= CCCC= DDDD= EEEE=)"));
        }
    }
}

TEST(ContainerReader, AChunkIsPaddedAsItsOwnGroupSaysAndNotAsAGroupInIt) {
    // The two-byte form ends at a position that only the four-byte form around it pads.
    Bytes inner;
    inner.group("FORM", "TWOS", Bytes().chunk("AAAA", "12", 2)).fill(2);
    inner.chunk("BBBB", "x");
    Container c(Bytes().group("FOR4", "FOUR", inner));
    EXPECT_EQ(c.walk(), iffEndOfGroup);
    EXPECT_EQ(c.diary.text, "FOR4:FOUR(FORM:TWOS(AAAA=12) BBBB=x)");
}

TEST(ContainerReader, TheEndOfAGroupLeavesNoChunk) {
    Inside c(Bytes().group("FOR4", "TEST", Bytes().chunk("AAAA", "12")));
    ASSERT_EQ(c.group.next(), id("AAAA"));
    for (int again = 0; again < 3; ++again) {
        EXPECT_EQ(c.group.next(), iffEndOfGroup);
        EXPECT_EQ(c.group.chunkId(), iffEndOfGroup);
        EXPECT_EQ(c.group.chunkSize(), 0u);
        EXPECT_EQ(c.group.consumed(), 0u);
    }
}

TEST(ContainerReader, AMalformedHeaderHasItsCode) {
    struct Row {
        const char* what;
        Bytes body;  // of a FOR4
        int code;
    };
    const Row rows[] = {
        {"less than a header", Bytes("1234"), iffBlockTooShort},
        {"a group-end pad that is missing", Bytes().header("AAAA", 2).add("1234").add("56"),
         iffBlockTooShort},
        {"body past the group", Bytes().header("AAAA", 5).add("1234"), iffPastBoundary},
        {"largest size", Bytes().header("AAAA", 0x7FFFFFFF), iffPastBoundary},
        {"top bit in the identifier", Bytes().u32(0xC1414141).u32(0), iffBadFile},
        {"size bit 2", Bytes().header("AAAA", 0x80000004), iffBadSize},
        {"size bit 30", Bytes().header("AAAA", 0xC0000000), iffBadSize},
        {"all size bits", Bytes().header("AAAA", 0xFFFFFFFF), iffBadSize},
        {"property outside a list", Bytes().group("PROP", "CIMG", {}), iffUnexpectedBlock},
        {"property outside a list", Bytes().group("PRO4", "CIMG", {}), iffUnexpectedBlock},
        {"path", Bytes().chunk("PATH", "1234"), iffNotImplemented},
        {"include", Bytes().chunk("INCL", "1234"), iffNotImplemented},
        {"group too small for its type", Bytes().header("FOR4", 2).add("1234"), iffBlockTooShort},
        {"no room for the type", Bytes().header("FOR4", 0x80000000), iffPastBoundary},
    };
    for (const Row& row : rows) {
        for (const bool stream : {false, true}) {
            Inside c(Bytes().group("FOR4", "TEST", row.body), stream);
            ASSERT_EQ(c.entered, iffOk) << row.what;
            int result = c.group.next();
            if (result == id("AAAA")) result = c.group.next();
            EXPECT_EQ(result, row.code) << row.what;
        }
    }
}

TEST(ContainerReader, ABadChunkIsRefusedBeforeAnyByteOfItsBody) {
    Inside c(Bytes().group("FOR4", "TEST", Bytes().header("AAAA", 9).add("12345678")));
    EXPECT_EQ(c.group.next(), iffPastBoundary);
    EXPECT_EQ(c.group.position(), 20u);
    EXPECT_EQ(c.group.chunkId(), iffPastBoundary);
}

TEST(ContainerReader, TheRootHoldsOnlyFormsConcatenationsAndLists) {
    const Bytes rows[] = {Bytes().chunk("TBHD", "1234"), Bytes().group("PROP", "CIMG", {}),
                          Bytes().header("GEND", 0x80000000), Bytes().u32(0).u32(0)};
    for (const Bytes& row : rows) {
        Container c(row);
        EXPECT_EQ(c.root.next(), iffBadRootBlock);
        EXPECT_EQ(c.root.chunkId(), iffBadRootBlock);
    }
    for (const char* reserved : {"PATH", "INCL"}) {
        Container c(Bytes().chunk(reserved, "1234"));
        EXPECT_EQ(c.root.next(), iffNotImplemented);
    }
}

TEST(ContainerReader, EndMarkersWhereAHeaderIsExpectedAreSkipped) {
    Bytes body;
    body.header("EOVC", 0x80000000).chunk("AAAA", "1").header("EOVC", 7).header("EOVC", 0);
    body.chunk("BBBB", "2").header("EOVC", 0x80000000);
    Container c(Bytes().header("EOVC", 0).group("FOR4", "TEST", body).header("EOVC", 0));
    EXPECT_EQ(c.walk(), iffEndOfGroup);
    EXPECT_EQ(c.diary.text, "FOR4:TEST(AAAA=1 BBBB=2)");
}

TEST(ContainerReader, GroupsInSequenceAtTheRootEndWithTheFile) {
    for (const bool stream : {false, true}) {
        Container c(Bytes().group("FOR4", "ONE1", {}).group("FORM", "TWO2", {}), stream);
        EXPECT_EQ(c.walk(), iffEndOfGroup);
        EXPECT_EQ(c.diary.text, "FOR4:ONE1() FORM:TWO2()");
        EXPECT_EQ(c.root.chunkId(), iffEndOfGroup);
    }
}

TEST(ContainerReader, AStreamMayStandAnywhereInItsFile) {
    test::TemporaryFile file(Bytes("prelude").group("FOR4", "TEST", Bytes().chunk("AAAA", "1")));
    FILE* stream = file.open();
    ASSERT_TRUE(platform::seekStream(stream, 7, SEEK_SET));
    IffReader root;
    ASSERT_EQ(root.open(stream), iffOk);
    EXPECT_EQ(root.position(), 0u);
    EXPECT_EQ(root.streamBytesLeft(), 24u);
    EXPECT_EQ(root.next(), id("FOR4"));
    EXPECT_EQ(root.streamBytesLeft(), 12u);
    EXPECT_EQ(root.next(), iffEndOfGroup);
}

}  // namespace
}  // namespace vistel
