// Groups: entering and leaving, handlers, unknown sizes.

#include <gtest/gtest.h>

#include <algorithm>

#include "iff/container_walk.h"

namespace vistel {
namespace {

using test::Bytes;
using test::Container;
using test::Inside;
using test::complete;
using test::id;
using test::ignore;
using test::parse;

TEST(ContainerGroups, AChildBeginsInsideItsParentsChunk) {
    Inside c(Bytes().group("FOR4", "TEST", Bytes().chunk("AAAA", "12345678")));
    ASSERT_EQ(c.entered, iffOk);
    EXPECT_EQ(c.group.parent(), &c.root);
    EXPECT_EQ(c.group.depth(), 1u);
    EXPECT_EQ(c.group.chunkId(), 0);
    EXPECT_EQ(c.group.chunkSize(), 0u);
    EXPECT_EQ(c.group.consumed(), 0u);
    EXPECT_EQ(c.group.position(), 12u);
    EXPECT_EQ(c.group.groupEnd(), 28u);
    EXPECT_EQ(c.group.user, c.root.user);
}

TEST(ContainerGroups, LeavingHandsThePositionBack) {
    Inside c(
        Bytes().group("FOR4", "TEST", Bytes().chunk("AAAA", "12345678")).group("FOR4", "NEXT", {}));
    ASSERT_EQ(c.group.next(), id("AAAA"));
    char body[3];
    ASSERT_EQ(c.group.readBytes(body, 3), iffOk);
    c.group.leave();
    EXPECT_EQ(c.root.position(), 23u);
    EXPECT_EQ(c.root.consumed(), 15u);
    EXPECT_EQ(c.root.next(), id("FOR4"));  // the rest was skipped
    EXPECT_EQ(c.root.groupType(), id("NEXT"));
}

TEST(ContainerGroups, AGroupThatEndsAtAnOddPositionIsRefused) {
    Container c(Bytes().header("FOR4", 5).add("TEST").fill(4));
    ASSERT_EQ(c.root.next(), id("FOR4"));
    IffReader child;
    EXPECT_EQ(c.root.enter(child), iffPastBoundary);
}

TEST(ContainerGroups, AGroupMayNotPassTheOneAroundIt) {
    Inside c(Bytes().group("FOR4", "TEST", Bytes().header("FOR4", 8).add("PAST")).fill(16));
    EXPECT_EQ(c.group.next(), iffPastBoundary);
}

TEST(ContainerGroups, OnlyAGroupIsEntered) {
    Inside c(Bytes().group("FOR4", "TEST", Bytes().chunk("AAAA", "12345678")));
    ASSERT_EQ(c.group.next(), id("AAAA"));
    IffReader child;
    EXPECT_EQ(c.group.enter(child), iffClientError);
}

TEST(ContainerGroups, EveryKindHasItsHandlerForAllThreeAlignments) {
    static std::string called;
    const IffHandlers handlers = {[](IffReader&) { return called += "f", int{iffOk}; },
                                  [](IffReader&) { return called += "c", int{iffOk}; },
                                  [](IffReader&) { return called += "l", int{iffOk}; },
                                  [](IffReader&) { return called += "p", int{iffOk}; },
                                  {}};
    Bytes body;
    for (const char* kind : {"FOR4", "FORM", "FOR8", "CAT4", "CAT ", "CAT8", "LIS4", "LIST", "LIS8",
                             "PRO4", "PROP", "PRO8"}) {
        body.group(kind, "TEST", Bytes().fill(4));
    }
    Container c(Bytes().group("LIS8", "TEST", body));
    ASSERT_EQ(c.root.next(), id("LIS8"));
    called.clear();
    EXPECT_EQ(c.root.parseGroup(&handlers), iffOk);
    EXPECT_EQ(called, "fffccclllppp");
}

TEST(ContainerGroups, AGroupWithoutHandlerIsSkipped) {
    Container c(Bytes()
                    .group("FOR4", "ONE1", Bytes().chunk("AAAA", "1"))
                    .group("CAT4", "TWO2", Bytes().group("FOR4", "IN  ", {}))
                    .group("FOR4", "END ", {}));
    c.root.handlers.concatenation = nullptr;
    EXPECT_EQ(c.walk(), iffEndOfGroup);
    EXPECT_EQ(c.diary.text, "FOR4:ONE1(AAAA=1) FOR4:END ()");
}

TEST(ContainerGroups, AnIgnoredGroupIsSkippedWithoutError) {
    Container c(
        Bytes().group("FOR4", "ONE1", Bytes().chunk("AAAA", "1")).group("FOR4", "TWO2", {}));
    c.root.handlers.form = ignore;
    EXPECT_EQ(c.root.dispatch(), iffOk);
    EXPECT_EQ(c.root.groupType(), id("ONE1"));
    EXPECT_EQ(c.root.dispatch(), iffOk);
    EXPECT_EQ(c.root.groupType(), id("TWO2"));
    EXPECT_EQ(c.root.dispatch(), iffEndOfGroup);
}

TEST(ContainerGroups, AnIgnoredStreamedGroupIsWalkedToItsEnd) {
    Bytes deep;
    deep.streamedChunk("AAAA", "1234");
    deep.openGroup("CAT4", "DEEP",
                   Bytes().openGroup("FOR4", "LOW ", Bytes().chunk("BBBB", "1"), 0x80000002),
                   0x80000002);
    deep.group("FOR4", "KNOW", Bytes().chunk("CCCC", "22"));
    for (const bool stream : {false, true}) {
        Container c(Bytes().openGroup("FOR4", "ONE1", deep, 0x80000002).group("FOR4", "TWO2", {}),
                    stream);
        c.root.handlers.form = ignore;
        EXPECT_EQ(c.root.dispatch(), iffOk);
        EXPECT_EQ(c.root.dispatch(), iffOk);
        EXPECT_EQ(c.root.groupType(), id("TWO2"));
        EXPECT_EQ(c.root.dispatch(), iffEndOfGroup);
    }
}

TEST(ContainerGroups, AnIgnoredGroupOfNoSizeYetCannotBeSkipped) {
    for (const uint32_t size : {0x80000000u, 0x80000001u}) {
        for (const bool stream : {false, true}) {
            Container c(Bytes().openGroup("FOR4", "ONE1", {}, size), stream);
            c.root.handlers.form = ignore;
            EXPECT_EQ(c.root.dispatch(), iffOk);
            EXPECT_EQ(c.root.dispatch(), stream ? iffInvalidOnFifo : iffInUse);
        }
    }
}

TEST(ContainerGroups, AGroupOfUnknownSizeEndsAtItsEndChunk) {
    for (const uint32_t size : {0x80000000u, 0x80000001u, 0x80000002u}) {
        for (const uint32_t endSize : {0u, 0x80000000u}) {
            Bytes inner;
            inner.chunk("AAAA", "123");
            inner.openGroup("FOR4", "TBMP", Bytes().chunk("BBBB", "4567"), size, endSize);
            Container c(
                Bytes().openGroup("FOR4", "CIMG", inner, size, endSize).group("FOR4", "TWO2", {}));
            EXPECT_EQ(c.walk(), iffEndOfGroup);
            EXPECT_EQ(c.diary.text, "FOR4:CIMG(AAAA=123 FOR4:TBMP(BBBB=4567)) FOR4:TWO2()");
        }
    }
}

TEST(ContainerGroups, TheSizeOfAnEndedGroupIsStoredInItsParent) {
    Inside c(Bytes().openGroup("FOR4", "CIMG", Bytes().chunk("AAAA", "123")));
    EXPECT_EQ(c.group.groupEnd(), 0xFFFFFFF0u);
    ASSERT_EQ(c.group.next(), id("AAAA"));
    for (int again = 0; again < 3; ++again) EXPECT_EQ(c.group.next(), iffEndOfGroup);
    EXPECT_EQ(c.root.chunkSize(), 4u + 12u + 8u);
    c.group.leave();
    EXPECT_EQ(c.root.consumed(), 24u);
    EXPECT_EQ(c.root.next(), iffEndOfGroup);
}

TEST(ContainerGroups, AKnownSizeMustAgreeWithTheEndChunk) {
    const Bytes body = Bytes().chunk("AAAA", "123").header("GEND", 0x80000000);
    Container good(Bytes().group("FOR4", "CIMG", body));
    EXPECT_EQ(good.walk(), iffEndOfGroup);
    Container early(Bytes().group("FOR4", "CIMG", Bytes(body).chunk("BBBB", "")));
    EXPECT_EQ(early.walk(), iffBadBlockEnd);
    Container sized(Bytes().openGroup("FOR4", "CIMG", {}, 0x80000000, 4));
    EXPECT_EQ(sized.walk(), iffBadBlockEnd);
}

TEST(ContainerGroups, PropertiesStandInLists) {
    Bytes body;
    body.group("PRO4", "CIMG", Bytes().chunk("AAAA", "1")).group("FOR4", "CIMG", {});
    Container c(Bytes().group("LIS4", "CIMG", body));
    EXPECT_EQ(c.walk(), iffEndOfGroup);
    EXPECT_EQ(c.diary.text, "LIS4:CIMG(PRO4:CIMG(AAAA=1) FOR4:CIMG())");
    Container inForm(Bytes().group("LIS4", "CIMG", Bytes().group("FOR4", "CIMG", body)));
    EXPECT_EQ(inForm.walk(), iffUnexpectedBlock);
}

TEST(ContainerGroups, AParsedGroupWantsNoPlainChunks) {
    struct Row {
        Bytes body;
        IffHandler form;
        int result;
    };
    const Row rows[] = {
        {Bytes(), nullptr, iffOk},
        {Bytes().group("FOR4", "IN  ", {}), nullptr, iffOk},
        {Bytes().chunk("AAAA", ""), nullptr, iffBadFile},
        {Bytes().group("FOR4", "IN  ", {}).group("FOR4", "IN  ", {}), complete, iffParsingComplete},
        {Bytes().group("FOR4", "IN  ", Bytes().chunk("AAAA", "")), parse, iffBadFile},
        {Bytes("1234"), nullptr, iffBlockTooShort},
    };
    for (const Row& row : rows) {
        Container c(Bytes().group("CAT4", "TEST", row.body));
        c.root.handlers = {};
        c.root.handlers.form = row.form;
        ASSERT_EQ(c.root.next(), id("CAT4"));
        EXPECT_EQ(c.root.parseGroup(), row.result);
    }
}

TEST(ContainerGroups, AListTakesAGivenTableAndOtherGroupsInherit) {
    const IffHandlers given = {complete, nullptr, nullptr, nullptr, {}};
    for (const char* kind : {"LIST", "CAT "}) {
        Container c(Bytes().group(kind, "TEST", Bytes().group("FOR4", "IN  ", {})));
        c.root.handlers = {ignore, nullptr, nullptr, nullptr, {}};
        ASSERT_GT(c.root.next(), 0);
        EXPECT_EQ(c.root.parseGroup(&given), kind[0] == 'L' ? iffParsingComplete : iffOk);
        EXPECT_EQ(c.root.handlers.form, ignore);
    }
    Container inherited(Bytes().group("LIST", "TEST", Bytes().group("FOR4", "IN  ", {})));
    inherited.root.handlers = {complete, nullptr, nullptr, nullptr, {}};
    ASSERT_GT(inherited.root.next(), 0);
    EXPECT_EQ(inherited.root.parseGroup(), iffParsingComplete);
}

TEST(ContainerGroups, TheSkipperPassesEverythingAndTellsDamage) {
    const Bytes body =
        Bytes().chunk("AAAA", "123").group("FOR4", "IN  ", Bytes().chunk("BBBB", ""));
    Container c(Bytes().group("FOR4", "TEST", body));
    ASSERT_GT(c.root.next(), 0);
    EXPECT_EQ(c.root.skipGroup(), iffOk);
    EXPECT_EQ(c.root.consumed(), c.root.chunkSize());
    EXPECT_TRUE(c.diary.text.empty());
    Container bad(Bytes().group("FOR4", "TEST", Bytes().group("FOR4", "IN  ", Bytes("1234"))));
    ASSERT_GT(bad.root.next(), 0);
    EXPECT_EQ(bad.root.skipGroup(), iffBlockTooShort);
}

TEST(ContainerGroups, NestingIsBounded) {
    struct Row {
        int levels, result;
    };
    for (const Row& row : {Row{512, iffEndOfGroup}, Row{513, iffBadFile}, Row{20000, iffBadFile}}) {
        for (const uint32_t size : {0x80000000u, 0x80000002u}) {
            Bytes bytes;
            for (int i = 0; i < row.levels; ++i) bytes.header("FOR4", size).add("NEST");
            for (int i = 0; i < row.levels; ++i) bytes.header("GEND", 0x80000000);
            Container c(bytes);
            EXPECT_EQ(c.walk(), row.result) << row.levels;
            Container skipped(bytes);
            ASSERT_GT(skipped.root.next(), 0);
            EXPECT_EQ(skipped.root.skipGroup(), row.result == iffBadFile ? iffBadFile : iffOk);
        }
    }
}

}  // namespace
}  // namespace vistel
