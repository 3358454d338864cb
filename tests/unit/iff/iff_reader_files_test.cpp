// Whole files, sound and damaged, through the reader.

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

TEST(ContainerFiles, AParseLooksAtTheFirstGroupOnly) {
    test::TemporaryFile file(Bytes().group("FOR4", "ONE1", {}).group("FOR4", "TWO2", {}));
    test::Diary diary;
    IffReader root;
    root.user = &diary;
    root.handlers = test::noteEveryGroup;
    EXPECT_EQ(parseFile(root, file.open()), iffOk);
    EXPECT_EQ(diary.text, "FOR4:ONE1()");
}

TEST(ContainerFiles, AFileThatIsNoContainerIsToldFromADamagedOne) {
    struct Row {
        const char* what;
        Bytes bytes;
        IffHandler form;
        int result;
    };
    const Row rows[] = {
        {"text", Bytes("This is no picture at all"), parse, iffNotIff},
        {"a chunk at the root", Bytes().chunk("TBHD", "1234"), parse, iffNotIff},
        {"a property group", Bytes().group("PROP", "CIMG", {}), parse, iffNotIff},
        {"first byte above 127", Bytes().u8(0x89).add("PNG\r\n\x1a\n"), parse, iffNotIff},
        {"first byte above 127 behind a stray marker",
         Bytes().header("EOVC", 0x80000000).u8(0x89).fill(20), parse, iffBadFile},
        {"a handler that leaves a chunk", Bytes().group("FOR4", "CIMG", {}),
         [](IffReader&) { return 5; }, iffNotIff},
        {"a plain chunk in a form", Bytes().group("FOR4", "CIMG", Bytes().chunk("AAAA", "")), parse,
         iffBadFile},
        {"an ignored form", Bytes().group("FOR4", "CIMG", {}), ignore, iffOk},
        {"no handler", Bytes().group("FOR4", "CIMG", {}), nullptr, iffOk},
        {"complete", Bytes().group("FOR4", "CIMG", {}), complete, iffParsingComplete},
        {"reserved", Bytes().chunk("PATH", "1234"), parse, iffNotImplemented},
        {"empty", Bytes(), parse, iffIncomplete},
        {"half a header", Bytes("FOR4"), parse, iffPartialIo},
        {"no type", Bytes().header("FOR4", 4), parse, iffPartialIo},
        {"half a type", Bytes().header("FOR4", 4).add("CI"), parse, iffPartialIo},
    };
    for (const Row& row : rows) {
        test::TemporaryFile file(row.bytes);
        IffReader root;
        root.handlers.form = row.form;
        EXPECT_EQ(parseFile(root, file.open()), row.result) << row.what;
        IffReader again;
        again.handlers.form = row.form;
        const bool leavesChunk = row.form && row.result == iffBadFile;
        EXPECT_EQ(parseWholeFile(again, file.open()), leavesChunk ? int{iffBadFile} : row.result)
            << row.what;
    }
}

TEST(ContainerFiles, AWholeFileIsParsedGroupByGroup) {
    const Bytes three =
        Bytes().group("FOR4", "ONE1", {}).group("CAT4", "TWO2", {}).group("FOR4", "SIX6", {});
    struct Row {
        const char* what;
        Bytes tail;
        int result;
        const char* more;
    };
    const Row rows[] = {
        {"nothing", Bytes(), iffOk, ""},
        {"zeros", Bytes().fill(100), iffOk, ""},
        {"a few bytes", Bytes("abc"), iffOk, ""},
        {"text", Bytes("Good-bye, container."), iffOk, ""},
        {"half a header that is no group's", Bytes("abcdef"), iffOk, ""},
        {"half a group header", Bytes("FOR4").u16(0), iffPartialIo, ""},
        {"a group without type", Bytes().header("FOR4", 4), iffPartialIo, ""},
        {"a group of no such size", Bytes().header("FOR4", 0x80000010), iffBadSize, ""},
        {"a reserved group", Bytes().chunk("PATH", "1234"), iffNotImplemented, ""},
        {"a property group", Bytes().group("PROP", "CIMG", {}), iffOk, ""},
        {"an identifier above 127", Bytes().header("\xFF\xFF\xFF\xFF", 4), iffOk, ""},
        {"a damaged group", Bytes().group("FOR4", "BAD ", "1234"), iffBlockTooShort,
         " FOR4:BAD (!-8)"},
    };
    for (const Row& row : rows) {
        test::TemporaryFile file(Bytes(three).add(row.tail));
        test::Diary diary;
        IffReader root;
        root.user = &diary;
        root.handlers = test::noteEveryGroup;
        EXPECT_EQ(parseWholeFile(root, file.open()), row.result) << row.what;
        EXPECT_EQ(diary.text, std::string("FOR4:ONE1() CAT4:TWO2() FOR4:SIX6()") + row.more);
    }
}

TEST(ContainerFiles, AWholeFileEndsWhenAHandlerIsSatisfied) {
    test::TemporaryFile file(
        Bytes().group("FOR4", "ONE1", {}).group("CAT4", "TWO2", {}).group("FOR4", "SIX6", {}));
    IffReader root;
    root.handlers.form = ignore;
    root.handlers.concatenation = complete;
    EXPECT_EQ(parseWholeFile(root, file.open()), iffParsingComplete);
    EXPECT_EQ(root.groupType(), id("TWO2"));
}

// What a cut file may end in: nothing else, and never a crash or an endless walk.
TEST(ContainerFiles, AFileCutAtAnyByteEndsInOneOfTheCutsCodes) {
    Bytes inner;
    inner.chunk("AAAA", "123").group("FOR4", "KNOW", Bytes().chunk("BBBB", Bytes().fill(700)));
    inner.openGroup("FOR4", "OPEN", Bytes().streamedChunk("CCCC", "12345678"), 0x80000002);
    inner.chunk("DDDD", "");
    const Bytes whole = Bytes().openGroup("LIS4", "TEST", inner);
    for (size_t length = 0; length < whole.size(); ++length) {
        for (const bool stream : {false, true}) {
            for (const bool read : {false, true}) {
                Container c(whole.cut(length), stream);
                c.diary.readBodies = read;
                const int result = c.walk();
                const std::vector<int> listed = {iffIncomplete, iffPartialIo, iffBrokenPipe,
                                                 iffNoEndMarker};
                EXPECT_NE(std::find(listed.begin(), listed.end(), result), listed.end())
                    << length << ": " << result;
            }
        }
    }
    Container c(whole);
    EXPECT_EQ(c.walk(), iffEndOfGroup);
}

TEST(ContainerFiles, AFlippedBitGivesAListedCodeAndAnEnd) {
    Bytes inner;
    inner.chunk("AAAA", "123").group("PROP", "KNOW", Bytes().chunk("BBBB", "4"));
    inner.openGroup("FOR4", "OPEN", Bytes().streamedChunk("CCCC", "12345678"), 0x80000002);
    const Bytes whole = Bytes().openGroup("LIS4", "TEST", inner);
    for (size_t bit = 0; bit < whole.size() * 8; ++bit) {
        Bytes bytes = whole;
        bytes.data[bit / 8] ^= static_cast<uint8_t>(1 << bit % 8);
        Container c(bytes);
        c.diary.readBodies = bit % 2 == 0;
        const int result = c.walk();
        EXPECT_LT(result, 0);
        EXPECT_EQ(errorText(result).find("unknown"), std::string::npos) << result;
    }
}

}  // namespace
}  // namespace vistel
