// Telling a file's kind by its first bytes.

#include <gtest/gtest.h>

#include "iff/file_kind.h"
#include "iff/iff_bytes.h"

namespace vistel {
namespace {

using test::Bytes;

Bytes raster(unsigned a, unsigned b = 0, unsigned c = 0, unsigned d = 0) {
    return Bytes().u32(0x87CF032B).u8(a).u8(b).u8(c).u8(d).add("rest of it");
}
Bytes group(const char* kind, const char* type) {
    return Bytes().header(kind, 100).add(type).add("rest of it");
}

struct Row {
    Bytes bytes;
    int kind;
    // What the next reader of standard input meets when the bytes were pushed back.
    Bytes pushedBack;
};

std::vector<Row> rows() {
    std::vector<Row> table;
    const auto asItWas = [&](const Bytes& bytes, int kind) {
        table.push_back({bytes, kind, bytes});
    };
    asItWas(raster(1), 1);
    asItWas(raster(2), 2);
    asItWas(raster(3), 3);
    for (const Bytes& bytes : {raster(0), raster(4), raster(255), raster(1, 1), raster(2, 0, 1),
                               raster(0, 0, 0, 1), raster(3, 0, 0, 0x80)}) {
        asItWas(bytes, 0);
    }
    asItWas(Bytes().u32(0x01DA0101).add("rest"), 7);
    asItWas(Bytes().u32(0x024A020A).add("rest"), 8);
    asItWas(Bytes().u32(0x01DA0101), 7);
    asItWas(Bytes().u32(0x01010A01).add("rest"), 0);
    asItWas(Bytes("GIF89a"), 0);
    asItWas(Bytes("fOR4xxxxCIMG"), 0);
    asItWas(Bytes().fill(12), 0);

    // A container's words come back in another order: first, type, size.
    const auto container = [&](const char* kind, const char* type, int code) {
        const Bytes bytes = group(kind, type);
        table.push_back({bytes, code, Bytes(kind).add(type).u32(100).add("rest of it")});
    };
    for (const char* kind : {"FOR4", "FORM", "FOR8", "FOR?"}) {
        container(kind, "CIMG", 4);
        container(kind, "CIMx", 4);
        container(kind, "CI4G", 6);
        container(kind, "TBMP", 6);
    }
    for (const char* kind : {"LIST", "LIS4", "CAT ", "CAT8"}) {
        container(kind, "CIMG", 5);
        container(kind, "cIMG", 6);
    }
    return table;
}

TEST(FileKind, TheFirstBytesTellTheKind) {
    for (const Row& row : rows()) {
        const test::TemporaryFile file(row.bytes);
        EXPECT_EQ(probeFileKind(file.name()), row.kind)
            << std::string(row.bytes.data.begin(), row.bytes.data.end());
    }
}

TEST(FileKind, AFileTooShortToTellIsUnreadable) {
    const Bytes cut[] = {Bytes(),
                         Bytes("FOR"),
                         raster(1).cut(7),
                         group("FOR4", "CIMG").cut(7),
                         group("FOR4", "CIMG").cut(11),
                         group("LIST", "CIMG").cut(4)};
    for (const Bytes& bytes : cut) {
        const test::TemporaryFile file(bytes);
        EXPECT_EQ(probeFileKind(file.name()), -1);
    }
}

TEST(FileKind, AFileThatCannotBeOpenedIsUnreadable) {
    const test::TemporaryFile missing;
    EXPECT_EQ(probeFileKind(missing.name()), -1);
    EXPECT_EQ(probeFileKind(""), -1);
    EXPECT_EQ(probeFileKind("."), -1);
}

TEST(FileKind, TheWordsReadFromStandardInputGoBackInTheirOrder) {
    for (const Row& row : rows()) {
        test::TemporaryFile file(row.bytes);
        FILE* stream = file.open();
        EXPECT_EQ(probeStream(stream, true), row.kind);
        Bytes met;
        for (int byte; (byte = std::fgetc(stream)) != EOF;) met.u8(static_cast<unsigned>(byte));
        EXPECT_EQ(met, row.pushedBack) << std::string(met.data.begin(), met.data.end());
    }
}

TEST(FileKind, AnotherFilesBytesStayRead) {
    test::TemporaryFile file(group("FOR4", "CIMG"));
    FILE* stream = file.open();
    EXPECT_EQ(probeStream(stream, false), 4);
    EXPECT_EQ(std::fgetc(stream), 'r');
}

}  // namespace
}  // namespace vistel
