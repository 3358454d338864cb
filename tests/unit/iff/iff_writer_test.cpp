// The writer: what it writes byte for byte, what it refuses, and that the reader reads it back.

#include <gtest/gtest.h>

#include <cerrno>

#include "iff/container_walk.h"
#include "iff/iff_writer.h"
#include "platform/process.h"

namespace vistel {
namespace {

using test::Bytes;

constexpr int32_t chunkA = iffId("AAAA"), chunkB = iffId("BBBB");
constexpr int32_t form = iffId("FOR4"), image = iffId("CIMG"), tiles = iffId("TBMP");

// A writer on a temporary file, seekable or treated as a pipe.
struct Output {
    explicit Output(bool forceStream = false) {
        opened = writer.openStream(platform::openFile(file.name(), "w"), forceStream);
    }
    Bytes written() {
        closed = writer.close();
        return file.read();
    }
    test::TemporaryFile file;
    IffWriter writer;
    int opened = iffOk, closed = iffOk;
};

// The root group with this body, as it is on a file (size patched) and on a stream.
Bytes rootOnFile(const Bytes& body) {
    return Bytes().group("FOR4", "CIMG", Bytes(body).header("GEND", 0x80000000));
}
Bytes rootOnStream(const Bytes& body) {
    return Bytes().openGroup("FOR4", "CIMG", body, 0x80000002);
}

TEST(ContainerWriter, TheRootIsAFormOfTypeImage) {
    Output file, stream(true);
    ASSERT_EQ(file.opened, iffOk);
    EXPECT_EQ(file.writer.flags(), uint32_t{iffFlagWriting});
    EXPECT_EQ(file.writer.depth(), 1u);
    EXPECT_EQ(file.writer.openId(), form);
    EXPECT_EQ(file.writer.openType(), image);
    EXPECT_EQ(file.writer.versionFirst, 1);
    EXPECT_EQ(file.writer.versionSecond, 1);
    EXPECT_EQ(stream.writer.flags(), uint32_t{iffFlagWriting | iffFlagStream});
    EXPECT_EQ(file.written(), rootOnFile({}));
    EXPECT_EQ(stream.written(), rootOnStream({}));
    EXPECT_EQ(file.closed, iffOk);
}

TEST(ContainerWriter, AChunkIsPaddedWithZerosToItsGroupsAlignment) {
    struct Row {
        const char (&kind)[5];
        size_t alignment;
    };
    for (const Row& row : {Row{"FOR4", 4}, Row{"FORM", 2}, Row{"FOR8", 8}}) {
        for (size_t size = 0; size < 18; ++size) {
            Output out;
            const std::string body(size, 'x');
            ASSERT_EQ(out.writer.beginGroup(iffId(row.kind), tiles), iffOk);
            ASSERT_EQ(out.writer.writeChunk(chunkA, body.data(), static_cast<uint32_t>(size)),
                      iffOk);
            ASSERT_EQ(out.writer.endGroup(), iffOk);
            const Bytes inner = Bytes()
                                    .chunk("AAAA", std::string_view(body), row.alignment)
                                    .header("GEND", 0x80000000);
            Bytes group;
            group.group(row.kind, "TBMP", inner);
            group.fill((4 - group.size() % 4) % 4);
            EXPECT_EQ(out.written(), rootOnFile(group)) << row.kind << size;
        }
    }
}

TEST(ContainerWriter, ASizeNotKnownInAdvanceIsPatchedOrMarked) {
    Output file, stream(true);
    for (Output* out : {&file, &stream}) {
        ASSERT_EQ(out->writer.beginGroup(form, tiles), iffOk);
        ASSERT_EQ(out->writer.beginChunk(chunkA), iffOk);
        ASSERT_EQ(out->writer.write("123", 3), iffOk);
        ASSERT_EQ(out->writer.write("45", 2), iffOk);
        ASSERT_EQ(out->writer.endChunk(), iffOk);
        ASSERT_EQ(out->writer.endGroup(), iffOk);
        ASSERT_EQ(out->writer.writeChunk(chunkB, "B", 1), iffOk);
    }
    Bytes onFile, onStream;
    onFile.group("FOR4", "TBMP", Bytes().chunk("AAAA", "12345").header("GEND", 0x80000000));
    onFile.chunk("BBBB", "B");
    onStream.openGroup("FOR4", "TBMP", Bytes().streamedChunk("AAAA", Bytes("12345").fill(3)),
                       0x80000002);
    onStream.chunk("BBBB", "B");
    EXPECT_EQ(file.written(), rootOnFile(onFile));
    EXPECT_EQ(stream.written(), rootOnStream(onStream));
}

TEST(ContainerWriter, UntilItIsPatchedAChunkIsMarkedAsInUse) {
    Output out;
    ASSERT_EQ(out.writer.beginChunk(chunkA, 0xFFFFFFFF), iffOk);
    ASSERT_EQ(out.writer.endChunk(), iffOk);  // seeking writes out what is buffered
    const Bytes soFar = out.file.read();
    ASSERT_GE(soFar.size(), 12u);
    EXPECT_EQ(soFar.cut(12), Bytes().header("FOR4", 0x80000001).add("CIMG"));
    EXPECT_EQ(out.written(), rootOnFile(Bytes().chunk("AAAA", "")));
}

TEST(ContainerWriter, AChunkWithoutItsWholeBodyIsFilledWithZeros) {
    Output out;
    ASSERT_EQ(out.writer.beginChunk(chunkA, 21), iffOk);
    ASSERT_EQ(out.writer.write("12", 2), iffOk);
    ASSERT_EQ(out.writer.endChunk(), iffOk);
    EXPECT_EQ(out.written(), rootOnFile(Bytes().chunk("AAAA", Bytes("12").fill(19))));
}

TEST(ContainerWriter, AGroupOfKnownSizeNeedsNoEndChunk) {
    Output out;
    ASSERT_EQ(out.writer.beginGroup(form, tiles, 4 + 12), iffOk);
    ASSERT_EQ(out.writer.writeChunk(chunkA, "1", 1), iffOk);
    ASSERT_EQ(out.writer.endGroup(), iffOk);
    EXPECT_EQ(out.written(), rootOnFile(Bytes().group("FOR4", "TBMP", Bytes().chunk("AAAA", "1"))));
}

TEST(ContainerWriter, PlainChunksStandInGroups) {
    Output out;
    ASSERT_EQ(out.writer.endGroup(), iffOk);
    EXPECT_EQ(out.writer.depth(), 0u);
    EXPECT_EQ(out.writer.beginChunk(chunkA, 4), iffBadRootBlock);
    EXPECT_EQ(out.writer.writeChunk(chunkA, "1", 1), iffBadRootBlock);
    EXPECT_EQ(out.writer.beginGroup(form, image), iffOk);  // another image behind the first
    EXPECT_EQ(out.written(), Bytes(rootOnFile({})).add(rootOnFile({})));
}

TEST(ContainerWriter, PropertyGroupsStandInLists) {
    for (const int32_t kind : {iffId("PRO4"), iffId("PROP"), iffId("PRO8")}) {
        Output out;
        EXPECT_EQ(out.writer.beginGroup(kind, image), iffUnexpectedBlock);
        ASSERT_EQ(out.writer.beginGroup(iffId("CAT4"), image), iffOk);
        EXPECT_EQ(out.writer.beginGroup(kind, image), iffUnexpectedBlock);
        ASSERT_EQ(out.writer.beginGroup(iffId("LIS4"), image), iffOk);
        EXPECT_EQ(out.writer.beginGroup(kind, image), iffOk);
        EXPECT_EQ(out.writer.beginGroup(kind, image), iffUnexpectedBlock);
    }
}

TEST(ContainerWriter, NothingPassesAChunkOrAGroup) {
    Output out;
    ASSERT_EQ(out.writer.beginGroup(form, tiles, 4 + 8 + 8 + 4), iffOk);
    ASSERT_EQ(out.writer.beginChunk(chunkA, 6), iffOk);
    EXPECT_EQ(out.writer.write("1234567", 7), iffPastBoundary);
    EXPECT_EQ(out.writer.write("123456", 6), iffOk);
    EXPECT_EQ(out.writer.write("7", 1), iffPastBoundary);
    EXPECT_EQ(out.writer.write("", 0), iffOk);
    ASSERT_EQ(out.writer.endChunk(), iffOk);
    EXPECT_EQ(out.writer.beginChunk(chunkB, 0), iffPastBoundary);  // 4 bytes left
    EXPECT_EQ(out.writer.beginGroup(form, tiles), iffPastBoundary);
    EXPECT_EQ(out.written().size(), rootOnFile(Bytes().fill(32)).size());
}

TEST(ContainerWriter, ABodyMayNotPassItsGroupWhateverSizeIsDeclared) {
    Output out;
    ASSERT_EQ(out.writer.beginGroup(form, tiles, 4 + 8 + 4), iffOk);
    ASSERT_EQ(out.writer.beginChunk(chunkA), iffOk);
    EXPECT_EQ(out.writer.write("12345", 5), iffPastBoundary);
    EXPECT_EQ(out.writer.write("1234", 4), iffOk);
    ASSERT_EQ(out.writer.endChunk(), iffOk);
    ASSERT_EQ(out.writer.endGroup(), iffOk);
    EXPECT_EQ(out.written(),
              rootOnFile(Bytes().group("FOR4", "TBMP", Bytes().chunk("AAAA", "1234"))));
}

TEST(ContainerWriter, ADeclaredSizeThatPassesItsGroupIsRefused) {
    Output out;
    ASSERT_EQ(out.writer.beginGroup(form, tiles, 4 + 8 + 6), iffOk);
    EXPECT_EQ(out.writer.beginChunk(chunkA, 7), iffPastBoundary);
    EXPECT_EQ(out.writer.beginGroup(form, tiles, 7), iffPastBoundary);
    ASSERT_EQ(out.writer.beginChunk(chunkA, 6), iffOk);
    EXPECT_EQ(out.writer.write("123456", 6), iffOk);
    // No room for its pad bytes: it stays open.
    EXPECT_EQ(out.writer.endChunk(), iffPastBoundary);
    EXPECT_EQ(out.writer.endChunk(), iffPastBoundary);
    EXPECT_EQ(out.written().size(), 12u + 12 + 8 + 6);
}

TEST(ContainerWriter, MisuseIsAClientError) {
    Output out;
    EXPECT_EQ(out.writer.endChunk(), iffClientError);     // a group is open
    EXPECT_EQ(out.writer.write("1", 1), iffClientError);  // no chunk is
    EXPECT_EQ(out.writer.beginChunk(form), iffClientError);
    EXPECT_EQ(out.writer.beginGroup(chunkA, image), iffClientError);
    EXPECT_EQ(out.writer.beginGroup(iffId("PATH"), image), iffNotImplemented);
    EXPECT_EQ(out.writer.beginGroup(iffId("INCL"), image), iffNotImplemented);
    EXPECT_EQ(out.writer.beginGroup(form, image, 3), iffPastBoundary);
    ASSERT_EQ(out.writer.beginChunk(chunkA), iffOk);
    EXPECT_EQ(out.writer.beginChunk(chunkB), iffClientError);
    EXPECT_EQ(out.writer.beginGroup(form, image), iffClientError);
    EXPECT_EQ(out.writer.endGroup(), iffClientError);
    ASSERT_EQ(out.writer.endChunk(), iffOk);
    ASSERT_EQ(out.writer.endGroup(), iffOk);
    EXPECT_EQ(out.writer.endGroup(), iffClientError);
    EXPECT_EQ(out.writer.endChunk(), iffClientError);
    EXPECT_EQ(out.written(), rootOnFile(Bytes().chunk("AAAA", "")));
    EXPECT_EQ(out.writer.beginChunk(chunkA), iffClientError);  // closed
    EXPECT_EQ(out.writer.beginGroup(form, image), iffClientError);
    EXPECT_EQ(out.writer.close(), iffOk);
}

TEST(ContainerWriter, ClosingEndsWhatIsOpen) {
    Output out;
    ASSERT_EQ(out.writer.beginGroup(form, tiles), iffOk);
    ASSERT_EQ(out.writer.beginChunk(chunkA), iffOk);
    ASSERT_EQ(out.writer.write("1", 1), iffOk);
    const Bytes tileGroup =
        Bytes().group("FOR4", "TBMP", Bytes().chunk("AAAA", "1").header("GEND", 0x80000000));
    EXPECT_EQ(out.written(), rootOnFile(tileGroup));
    EXPECT_FALSE(out.writer.isOpen());
}

TEST(ContainerWriter, ANameIsOpenedAsAFile) {
    test::TemporaryFile file;
    IffWriter writer;
    ASSERT_EQ(writer.open(file.name(), std::nullopt), iffOk);
    EXPECT_EQ(writer.name(), file.name());
    EXPECT_TRUE(writer.seekable());
    EXPECT_EQ(writer.close(), iffOk);
    EXPECT_EQ(file.read(), rootOnFile({}));
}

TEST(ContainerWriter, ANameThatCannotBeOpenedIsAnIoError) {
    test::TemporaryFile missing;
    IffWriter writer;
    errno = 0;
    EXPECT_EQ(writer.open(missing.name() + "/no/such/folder", std::nullopt), iffIoError);
    EXPECT_NE(errno, 0);
    EXPECT_FALSE(writer.isOpen());
    EXPECT_EQ(writer.beginChunk(chunkA), iffClientError);
}

TEST(ContainerWriter, AStreamThatCannotBeWrittenIsAnIoError) {
    test::TemporaryFile file{Bytes("old content")};
    IffWriter writer;
    ASSERT_EQ(writer.openStream(platform::openFile(file.name(), "r")), iffIoError);
    EXPECT_FALSE(writer.isOpen());
    EXPECT_EQ(file.read(), Bytes("old content"));
}

TEST(ContainerWriter, APipeGetsAStreamAndAReaderThatGoesAwayIsAnIoError) {
    platform::catchInterrupts();  // as the program does at start: a broken pipe is a failed write
    IffWriter writer;
    FILE* pipe = platform::openPipe("exit 0", "w");
    ASSERT_NE(pipe, nullptr);
    // The command may be gone before the first byte.
    int code = writer.openStream(pipe);
    if (code == iffOk) {
        EXPECT_EQ(writer.flags(), uint32_t{iffFlagWriting | iffFlagStream});
        ASSERT_EQ(writer.beginChunk(chunkA), iffOk);
        const std::string block(65536, 'x');
        for (int i = 0; i < 1000 && code == iffOk; ++i)
            code = writer.write(block.data(), block.size());
        EXPECT_EQ(writer.close(), iffIoError);
    }
    EXPECT_EQ(code, iffIoError);
}

TEST(ContainerWriter, WhatIsWrittenIsReadBack) {
    for (const bool stream : {false, true}) {
        Output out(stream);
        std::string expected = "FOR4:CIMG(";
        for (int i = 0; i < 9; ++i) {
            const std::string body(static_cast<size_t>(i), static_cast<char>('a' + i));
            ASSERT_EQ(out.writer.writeChunk(chunkA, body.data(), static_cast<uint32_t>(i)), iffOk);
            expected += "AAAA=" + body + " ";
        }
        ASSERT_EQ(out.writer.beginGroup(iffId("LIS8"), image), iffOk);
        ASSERT_EQ(out.writer.beginGroup(iffId("PROP"), image), iffOk);
        ASSERT_EQ(out.writer.writeChunk(chunkB, "123", 3), iffOk);
        ASSERT_EQ(out.writer.endGroup(), iffOk);
        ASSERT_EQ(out.writer.beginGroup(iffId("FORM"), tiles), iffOk);
        ASSERT_EQ(out.writer.beginChunk(chunkA), iffOk);
        ASSERT_EQ(out.writer.write("1234567", 7), iffOk);
        ASSERT_EQ(out.writer.endChunk(), iffOk);
        ASSERT_EQ(out.writer.writeChunk(chunkB, "", 0), iffOk);
        out.written();
        ASSERT_EQ(out.closed, iffOk);
        // The body of a chunk that runs to a marker cannot be told from its pad bytes.
        expected +=
            "LIS8:CIMG(PROP:CIMG(BBBB=123) FORM:TBMP(AAAA=" + std::string(stream ? "" : "1234567") +
            " BBBB=)))";
        for (const bool readAsStream : {false, true}) {
            test::Container c(out.file.read(), readAsStream);
            EXPECT_EQ(c.walk(), iffEndOfGroup);
            EXPECT_EQ(c.diary.text, expected);
        }
    }
}

}  // namespace
}  // namespace vistel
