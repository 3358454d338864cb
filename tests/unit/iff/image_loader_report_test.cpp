// The verbose report, against texts in tests/data/verbose. On a mismatch the report is written
// beside the text as NAME.new. {unknown} and {unwritten} stand for the catalogue's messages.

#include <gtest/gtest.h>

#include <fstream>

#include "golden.h"
#include "host/messages.h"
#include "iff/every_form.h"
#include "iff/image_sample.h"

namespace vistel {
namespace {

using test::Bytes;
using test::Loading;

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
}

// The report with plain line ends.
std::string report(Loading& load, int expected = iffOk) {
    load.request.verbose = true;
    testing::internal::CaptureStdout();
    const int code = load.run();
    std::fflush(stdout);
    std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(code, expected);
    replaceAll(text, "\r\n", "\n");
    return text;
}

void expectReport(const std::string& name, const std::string& got) {
    const std::string path = fileOfTree("tests/data/verbose/" + name + ".txt").string();
    std::ifstream file(path, std::ios::binary);
    std::string expected{std::istreambuf_iterator<char>(file), {}};
    replaceAll(expected, "{unknown}", messageText(Message::rVTUnknown));
    replaceAll(expected, "{unwritten}", messageText(Message::rVTNotYetWritten));
    EXPECT_EQ(got, expected);
    if (got != expected) std::ofstream(path + ".new", std::ios::binary) << got;
}

TEST(VerboseReport, ListsEveryChunkOfAnImage) {
    Loading load(test::everyChunk());
    expectReport("every_chunk", report(load));
}

TEST(VerboseReport, ListsRectanglesWhenTilesAreNotLoaded) {
    Loading load(test::everyChunk());
    load.request.loadPixels = false;
    load.request.showAll = true;
    expectReport("rectangles", report(load));
}

TEST(VerboseReport, ListsTileGroupsThatAreSkippedByTheirHeader) {
    Loading load(test::everyChunk());
    load.request.loadPixels = false;
    expectReport("tiles_skipped", report(load));
}

TEST(VerboseReport, ListsDepthTilesThatAreNotWantedByTheirHeader) {
    Loading load(test::everyChunk());
    load.request.loadZ = false;
    expectReport("no_depth", report(load));
}

Bytes smallImage(uint32_t flags, uint16_t tiles, uint32_t compression) {
    ImageHeader head = test::header(2, 1, flags, compression);
    head.tiles = tiles;
    const Bytes data = Bytes().fill(2 * size_t(head.bytesPerPixel()), 5);
    return test::imageForm(head, test::tile("RGBA", {0, 0, 1, 0}, data));
}

TEST(VerboseReport, ListsEveryGroupOfAList) {
    const Bytes images = Bytes()
                             .add(smallImage(imageColour, 1, compressRle))
                             .add(smallImage(imageMask, 2, 7))
                             .add(smallImage(imageBlack, 0, compressNone));
    Loading load(Bytes().group("LIS4", "CIMG",
                               Bytes()
                                   .group("PRO4", "CIMG", Bytes().chunk("NAME", "all"))
                                   .add(Bytes().group("CAT4", "CIMG", images))));
    expectReport("list", report(load));
}

TEST(VerboseReport, NamesUnknownSizesAndLeavesLongTextsOut) {
    Bytes body;
    body.chunk("TBHD", test::headerBody(test::header(2, 1, 0)));
    body.chunk("NAME", Bytes().fill(300, 'n'));
    body.chunk("ANNO", Bytes().fill(255, 'a'));
    body.chunk("ICON", Bytes().u16(1));
    body.chunk("ZPLC", Bytes().u32(0));
    body.chunk("COMM", test::soundFormatBody().add("ulaw").u8(0).u8(0));
    body.chunk("SSND", Bytes().fill(4));
    body.openGroup("FOR4", "TBMP", test::tile("RGBA", {0, 0, 1, 0}, Bytes().fill(2)));
    Loading load(Bytes().openGroup("FOR4", "CIMG", body));
    expectReport("unknown_sizes", report(load));
    // A group whose size is still to be patched can be listed but not read to its end.
    Loading unwritten(Bytes().openGroup("FOR4", "CIMG", body, 0x80000001));
    testing::internal::CaptureStdout();
    unwritten.request.verbose = true;
    (void)unwritten.run();
    std::fflush(stdout);
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(text.substr(0, text.find_first_of("\r\n")),
              "FOR4" + std::string(messageText(Message::rVTNotYetWritten)) + "CIMG");
}

TEST(VerboseReport, ListsGroupsOfEveryKindAndSize) {
    Loading load(test::everyForm());
    expectReport("every_form", report(load));
}

TEST(VerboseReport, DescribesEverySound) {
    const auto sound = [](unsigned channels, uint32_t frames, unsigned bits, unsigned exponent,
                          uint32_t mantissa) {
        return Bytes().u16(channels).u32(frames).u16(bits).u16(exponent).u32(mantissa).u32(0);
    };
    const Bytes cd = sound(2, 44100, 16, 0x400E, 0xAC440000);
    const std::string longName(200, 'n');
    const Bytes formats[] = {
        sound(1, 0, 8, 0x400D, 0xAC440000),
        sound(3, 4294967295, 24, 0x400E, 0xBB800000),
        sound(0, 1, 1, 0, 0),
        sound(1, 1, 1, 0x7FFF, 0),
        Bytes(cd).add("NONE").u8(14).add("not compressed").u8(0),
        Bytes(cd).add("NONE"),
        Bytes(cd).add("ulaw").u8(5).add("mu-law"),
        Bytes(cd).add("NON"),
        Bytes(cd).add("MAC3").u8(200).add(longName),
        Bytes(cd).cut(17),
        cd,
    };
    Bytes further;
    further.chunk("SSND", "");  // before any format
    for (const Bytes& format : formats) further.chunk("COMM", format).chunk("SSND", "12345678");
    const Bytes form =
        test::imageForm(test::header(1, 1, 0), test::tile("RGBA", {0, 0, 0, 0}, "x"), further);
    Loading load(form);
    expectReport("sound", report(load));
    // Without pixels the sound itself is not looked at.
    Loading unloaded(form);
    unloaded.request.loadPixels = false;
    expectReport("sound_skipped", report(unloaded));
}

TEST(VerboseReport, SaysNothingInAReadOfOneFrameOrUnasked) {
    Loading reread(test::everyChunk());
    reread.request.wantedForm = 1;
    EXPECT_EQ(report(reread), "");
    Loading quiet(test::everyChunk());
    testing::internal::CaptureStdout();
    EXPECT_EQ(quiet.run(), iffOk);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(VerboseReport, EndsTheLineOfAChunkThatFails) {
    Loading load(test::imageForm(test::header(0, 1, 0), {}));
    EXPECT_EQ(report(load, iffBadImageHeader), "FOR4       48 CIMG\n.TBHD       24 \n");
}

}  // namespace
}  // namespace vistel
