// The reader's way through the bytes of a chunk and over what nobody wants.

#include <gtest/gtest.h>

#include "iff/container_walk.h"

namespace vistel {
namespace {

using test::Bytes;
using test::Container;
using test::Inside;
using test::id;

TEST(ContainerReader, ABodyIsReadWithinItsChunk) {
    Inside c(Bytes().group("FOR4", "TEST", Bytes().chunk("AAAA", "123456")));
    ASSERT_EQ(c.group.next(), id("AAAA"));
    char body[8] = {};
    EXPECT_EQ(c.group.readBytes(body, 7), iffBlockTooShort);
    EXPECT_EQ(c.group.consumed(), 0u);
    EXPECT_EQ(c.group.readBytes(body, 4), iffOk);
    EXPECT_EQ(c.group.consumed(), 4u);
    EXPECT_EQ(c.group.chunkBytesLeft(), 2u);
    EXPECT_EQ(c.group.readBytes(body, 3), iffBlockTooShort);
    EXPECT_EQ(c.group.readBytes(body + 4, 2), iffOk);
    EXPECT_STREQ(body, "123456");
    EXPECT_EQ(c.group.readBytes(body, 1), iffBlockTooShort);
    EXPECT_EQ(c.group.readBytes(body, 0), iffOk);
}

TEST(ContainerReader, TheRestOfAChunkCanBeSkippedAtOnce) {
    Inside c(Bytes().group("FOR4", "TEST", Bytes().chunk("AAAA", "12345").chunk("BBBB", "")));
    ASSERT_EQ(c.group.next(), id("AAAA"));
    ASSERT_EQ(c.group.skipChunk(), iffOk);
    EXPECT_EQ(c.group.position(), 28u);
    ASSERT_EQ(c.group.skipChunk(), iffOk);
    EXPECT_EQ(c.group.position(), 28u);
    EXPECT_EQ(c.group.next(), id("BBBB"));
}

TEST(ContainerReader, AGapOf512BytesIsReadAndOneOf513IsSeekedOver) {
    // Cut in the gap: reading meets the end there, a seek goes beyond it and the next header
    // misses.
    struct Row {
        uint32_t size;
        bool stream;
        int skipped, next;
    };
    const Row rows[] = {{508, false, iffPartialIo, iffPartialIo},
                        {512, false, iffPartialIo, iffPartialIo},
                        {516, false, iffOk, iffIncomplete},
                        {516, true, iffBrokenPipe, iffBrokenPipe}};
    for (const Row& row : rows) {
        const Bytes whole = Bytes().group(
            "FOR4", "TEST", Bytes().chunk("AAAA", Bytes().fill(row.size)).chunk("BBBB", ""));
        Inside a(whole.cut(60), row.stream), b(whole.cut(60), row.stream);
        ASSERT_EQ(a.group.next(), id("AAAA"));
        EXPECT_EQ(a.group.skipChunk(), row.skipped) << row.size;
        ASSERT_EQ(b.group.next(), id("AAAA"));
        EXPECT_EQ(b.group.next(), row.next) << row.size;
    }
    // A gap that is no multiple of the alignment, 513, in a form without padding of its own.
    const Bytes odd = Bytes().group("FORM", "TEST", Bytes().chunk("AAAA", Bytes().fill(514), 2));
    Inside c(odd.cut(60));
    ASSERT_EQ(c.group.next(), id("AAAA"));
    char byte;
    ASSERT_EQ(c.group.readBytes(&byte, 1), iffOk);
    EXPECT_EQ(c.group.skipChunk(), iffOk);  // 513 left
    Inside d(odd.cut(60));
    ASSERT_EQ(d.group.next(), id("AAAA"));
    char bytes[2];
    ASSERT_EQ(d.group.readBytes(bytes, 2), iffOk);
    EXPECT_EQ(d.group.skipChunk(), iffPartialIo);  // 512 left
}

TEST(ContainerReader, LargeGapsAreSkippedOnStreamsToo) {
    for (const uint32_t size : {0u, 1u, 511u, 512u, 513u, 1024u, 1025u, 5000u}) {
        for (const bool stream : {false, true}) {
            Inside c(Bytes().group("FOR4", "TEST",
                                   Bytes().chunk("AAAA", Bytes().fill(size)).chunk("BBBB", "")),
                     stream);
            ASSERT_EQ(c.group.next(), id("AAAA"));
            EXPECT_EQ(c.group.next(), id("BBBB")) << size;
            EXPECT_EQ(c.group.next(), iffEndOfGroup);
        }
    }
}

TEST(ContainerReader, AStreamedChunkIsSkippedToItsEndMarker) {
    for (const size_t readFirst : {0u, 1u, 4u, 7u, 12u}) {
        Inside c(Bytes().group("FOR4", "TEST",
                               Bytes().streamedChunk("AAAA", "EOV12345678E").chunk("BBBB", "2")));
        ASSERT_EQ(c.group.next(), id("AAAA"));
        EXPECT_FALSE(c.group.sizeKnown());
        std::string body(readFirst, ' ');
        ASSERT_EQ(c.group.readBytes(body.data(), readFirst), iffOk);
        EXPECT_EQ(body, std::string("EOV12345678E").substr(0, readFirst));
        EXPECT_EQ(c.group.next(), id("BBBB")) << readFirst;
        EXPECT_EQ(c.group.next(), iffEndOfGroup);
    }
}

TEST(ContainerReader, AStreamedChunkIsNotReadPastItsGroup) {
    Inside c(Bytes().group("FOR4", "TEST", Bytes().streamedChunk("AAAA", "12345678")).fill(64));
    ASSERT_EQ(c.group.next(), id("AAAA"));
    EXPECT_EQ(c.group.chunkBytesLeft(), 16u);
    char body[64];
    EXPECT_EQ(c.group.readBytes(body, 17), iffPastBoundary);
    EXPECT_EQ(c.group.readBytes(body, 8), iffOk);
    EXPECT_EQ(c.group.next(), iffEndOfGroup);
}

TEST(ContainerReader, AStreamedChunkWithoutItsMarkerHasItsCode) {
    struct Row {
        const char* what;
        Bytes body;
        int code;
    };
    const Row rows[] = {
        {"no marker", Bytes().header("AAAA", 0x80000002).add("12345678"), iffNoEndMarker},
        {"marker off its word", Bytes().header("AAAA", 0x80000002).add("12EOVC34").u32(0x80000000),
         iffNoEndMarker},
        {"nothing behind the marker", Bytes().header("AAAA", 0x80000002).add("1234EOVC"),
         iffNoEndMarker},
        {"size 0 behind the marker", Bytes().header("AAAA", 0x80000002).add("1234EOVC").u32(0),
         iffBadEndMarker},
        {"marker twice", Bytes().header("AAAA", 0x80000002).add("EOVCEOVC"), iffBadEndMarker},
        {"size not known yet", Bytes().header("AAAA", 0x80000000).add("12345678"), iffInUse},
        {"size to be patched", Bytes().header("AAAA", 0x80000001).add("12345678"), iffInUse},
        {"size of no kind", Bytes().header("AAAA", 0x80000003).add("12345678"), iffInUse},
    };
    for (const Row& row : rows) {
        for (const bool stream : {false, true}) {
            const int code = row.code == iffInUse && stream ? int{iffInvalidOnFifo} : row.code;
            Inside known(Bytes().group("FOR4", "TEST", row.body), stream);
            ASSERT_EQ(known.group.next(), id("AAAA")) << row.what;
            EXPECT_EQ(known.group.next(), code) << row.what;
            Inside unknown(Bytes().header("FOR4", 0x80000002).add("TEST").add(row.body), stream);
            ASSERT_EQ(unknown.group.next(), id("AAAA")) << row.what;
            EXPECT_EQ(unknown.group.next(), code) << row.what;
        }
    }
}

TEST(ContainerReader, AStreamedGroupAtTheRootCannotBeSkippedByScanning) {
    Container c(Bytes().openGroup("FOR4", "TEST", {}, 0x80000002));
    ASSERT_EQ(c.root.next(), id("FOR4"));
    EXPECT_EQ(c.root.next(), iffNoParent);
}

TEST(ContainerReader, AFileCutInASkippedGroupIsIncomplete) {
    const Bytes whole = Bytes().group("FOR4", "ONE1", Bytes().chunk("AAAA", Bytes().fill(2000)));
    Container c(whole.cut(100));
    ASSERT_EQ(c.root.next(), id("FOR4"));
    EXPECT_EQ(c.root.next(), iffIncomplete);
}

}  // namespace
}  // namespace vistel
