// The converter's two ways, with files in a folder.
#include "convert.h"

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "codec_files.h"
#include "iff/image_writer.h"
#include "iff/result_codes.h"
#include "memory_rule.h"
#include "test_chart.h"

using namespace vistel;
using namespace vistel::test;

namespace {

class Convert : public testing::Test {
 protected:
    Convert() : folder_(std::filesystem::path(testing::TempDir()) / "pixconv_test") {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    ~Convert() override { std::filesystem::remove_all(folder_); }

    std::string path(const std::string& name) const { return (folder_ / name).generic_string(); }
    bool exists(const std::string& name) const { return std::filesystem::exists(folder_ / name); }
    void write(const std::string& name, const FileBytes& bytes) const {
        std::ofstream file(folder_ / name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    }
    FileBytes contents(const std::string& name) const {
        std::ifstream file(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(folder_))
            all.push_back(entry.path().filename().string());
        std::sort(all.begin(), all.end());
        return all;
    }
    // A frame stream through fromFrame.
    Failure save(const FileBytes& frame, const std::string& name, const std::string& key = "") {
        const platform::FilePtr in(std::tmpfile());
        const size_t written =
            frame.empty() ? 0 : std::fwrite(frame.data(), 1, frame.size(), in.get());
        EXPECT_EQ(written, frame.size());
        std::rewind(in.get());
        return fromFrame(in.get(), path(name), key);
    }
    Failure load(const std::string& name, Picture& picture) {
        const std::string frame = path("out of load");
        if (Failure failure = toFrame(path(name), platform::openFile(frame, "w"))) return failure;
        const platform::FilePtr file(platform::openFile(frame, "r"));
        return readFrame(file.get(), picture);
    }

 private:
    std::filesystem::path folder_;
};

FileBytes frameOf(const Picture& picture) { return writtenBytes(tavoCodec, picture); }

TEST_F(Convert, PicturesComeThroughBothWaysUnchanged) {
    for (const char* name : {"a.png", "b.tif", "c.iff", "d.sgi", "frame.12", "plain"})
        for (const bool wide : {false, true}) {
            SCOPED_TRACE(std::string(name) + (wide ? " wide" : ""));
            const Picture picture = samplePicture(70, 66, true, true, wide);
            Failure failure = save(frameOf(picture), name);
            ASSERT_FALSE(failure) << *failure;
            Picture back;
            failure = load(name, back);
            ASSERT_FALSE(failure) << *failure;
            expectSame(picture, back);
        }
}

TEST_F(Convert, TheFirstRowOfAFrameIsTheBottomOfThePicture) {
    Picture picture;
    ASSERT_FALSE(picture.allocate(1, 2, false));
    picture.row(0)[0] = 200;
    const FileBytes frame = frameOf(picture);
    // The tile is stored whole: blue, green, red of the bottom row, then of the top row.
    const FileBytes tile{0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 200};
    EXPECT_NE(std::search(frame.begin(), frame.end(), tile.begin(), tile.end()), frame.end());
}

TEST_F(Convert, TheKeyDecidesBeforeTheExtension) {
    const FileBytes frame = frameOf(samplePicture(5, 4, true, false, false));
    struct Row {
        const char *name, *key, *startsWith;
    };
    const Row rows[] = {{"a.tga", "png", "\x89PNG"}, {"a", "png", "\x89PNG"},
                        {"a.png", "tavo", "FOR4"},   {"a.png", "", "\x89PNG"},
                        {"A.PNG", "", "\x89PNG"},    {"b.png", "PNG", "\x89PNG"},
                        {"a.b.7", "", "FOR4"},       {"c", "", "FOR4"},
                        {"d.", "", "FOR4"},          {"e.iff", "", "FOR4"}};
    for (const Row& row : rows) {
        const Failure failure = save(frame, row.name, row.key);
        ASSERT_FALSE(failure) << row.name << ": " << *failure;
        std::ifstream file(path(row.name), std::ios::binary);
        std::string start(4, ' ');
        file.read(start.data(), 4);
        EXPECT_EQ(start, row.startsWith) << row.name;
    }
}

TEST_F(Convert, WhatCannotBeWrittenLeavesNothingBehind) {
    const FileBytes frame = frameOf(samplePicture(5, 4, true, false, false));
    struct Row {
        const char *name, *key, *reason;
    };
    const Row rows[] = {
        {"a.xyz", "", "no type has the extension \"xyz\""},
        {"a.png", "xyz", "no type has the key \"xyz\""},
        {"a.gif", "", "files of the type GIF cannot be written"},
        {"a.png", "psd", "files of the type Photoshop Document cannot be written"},
    };
    for (const Row& row : rows) {
        const Failure failure = save(frame, row.name, row.key);
        ASSERT_TRUE(failure) << row.name;
        EXPECT_EQ(*failure, row.reason);
        EXPECT_FALSE(exists(row.name));
    }
    const Failure failure = save(frame, "no such folder/a.png");
    ASSERT_TRUE(failure);
    EXPECT_EQ(*failure, std::strerror(ENOENT));
}

TEST_F(Convert, AStreamThatIsCutLeavesTheOldFileAlone) {
    const FileBytes frame = frameOf(samplePicture(9, 9, true, true, false));
    write("old.png", {1, 2, 3});
    for (size_t size = 0; size + 8 < frame.size(); size += 7) {
        const FileBytes part(frame.begin(), frame.begin() + std::ptrdiff_t(size));
        ASSERT_TRUE(save(part, "old.png")) << size;
        ASSERT_TRUE(save(part, "new.png")) << size;
        ASSERT_EQ(std::filesystem::file_size(path("old.png")), 3u);
        ASSERT_FALSE(exists("new.png"));
    }
}

TEST_F(Convert, AFileThatCannotBeFinishedLeavesWhatWasThere) {
    Picture picture;
    ASSERT_FALSE(picture.allocate(65501, 1, false));
    const FileBytes old = {1, 2, 3};
    write("old.jpg", old);
    for (const char* name : {"old.jpg", "new.jpg"}) {
        const Failure failure = save(frameOf(picture), name);
        ASSERT_TRUE(failure) << name;
        EXPECT_EQ(*failure, "a JPEG file has at most 65500 pixels each way");
    }
    EXPECT_EQ(names(), (std::vector<std::string>{"old.jpg"}));
    EXPECT_EQ(contents("old.jpg"), old);
}

TEST_F(Convert, AFileIsReplacedAndNothingElseIsLeft) {
    const Picture picture = samplePicture(5, 4, true, false, false);
    write("old.png", FileBytes(5000, 7));
    write("vistel-unfinished-0.tmp", {1});  // somebody else's
    const Failure failure = save(frameOf(picture), "old.png");
    ASSERT_FALSE(failure) << *failure;
    EXPECT_EQ(contents("old.png"), writtenBytes(pngCodec, picture));
    EXPECT_EQ(names(), (std::vector<std::string>{"old.png", "vistel-unfinished-0.tmp"}));
    EXPECT_EQ(contents("vistel-unfinished-0.tmp"), (FileBytes{1}));
}

TEST_F(Convert, AFileThatMayNotBeWrittenStays) {
    write("old.png", {1, 2, 3});
    using std::filesystem::perms;
    constexpr perms writing = perms::owner_write | perms::group_write | perms::others_write;
    std::filesystem::permissions(path("old.png"), writing, std::filesystem::perm_options::remove);
    if (platform::FilePtr(platform::openFile(path("old.png"), "r+"))) {
        std::filesystem::permissions(path("old.png"), writing, std::filesystem::perm_options::add);
        GTEST_SKIP() << "this user may write everything";
    }
    const Failure failure = save(frameOf(samplePicture(5, 4, true, false, false)), "old.png");
    EXPECT_TRUE(failure);
    EXPECT_EQ(contents("old.png"), (FileBytes{1, 2, 3}));
    std::filesystem::permissions(path("old.png"), writing, std::filesystem::perm_options::add);
    EXPECT_EQ(names(), (std::vector<std::string>{"old.png"}));
}

TEST_F(Convert, ASymbolicLinkStaysAndItsFileIsReplaced) {
    std::filesystem::create_directory(path("far"));
    write("far/old.png", {1, 2, 3});
    std::error_code error;
    std::filesystem::create_symlink("far/old.png", path("link.png"), error);
    if (error) GTEST_SKIP() << "there are no symbolic links here";
    const Picture picture = samplePicture(5, 4, true, false, false);
    const Failure failure = save(frameOf(picture), "link.png");
    ASSERT_FALSE(failure) << *failure;
    EXPECT_TRUE(std::filesystem::is_symlink(path("link.png")));
    EXPECT_EQ(contents("far/old.png"), writtenBytes(pngCodec, picture));
}

TEST_F(Convert, ASymbolicLinkThatLeadsNowhereIsToldAndStays) {
    std::error_code error;
    std::filesystem::create_symlink("missing.png", path("lost.png"), error);
    std::filesystem::create_symlink("round.png", path("round.png"), error);
    if (error) GTEST_SKIP() << "there are no symbolic links here";
    const FileBytes frame = frameOf(samplePicture(5, 4, true, false, false));
    const Failure lost = save(frame, "lost.png"), round = save(frame, "round.png");
    EXPECT_EQ(lost, "a symbolic link to a file that is not there");
    EXPECT_EQ(round, "a symbolic link that leads in a circle");
    EXPECT_EQ(names(), (std::vector<std::string>{"lost.png", "round.png"}));
    for (const char* name : {"lost.png", "round.png"})
        EXPECT_TRUE(std::filesystem::is_symlink(path(name)));
}

TEST_F(Convert, AHardLinkShowsTheNewPictureToo) {
    write("old.png", {1, 2, 3});
    std::filesystem::create_hard_link(path("old.png"), path("same.png"));
    const Picture picture = samplePicture(5, 4, true, false, false);
    const Failure failure = save(frameOf(picture), "old.png");
    ASSERT_FALSE(failure) << *failure;
    EXPECT_EQ(contents("same.png"), writtenBytes(pngCodec, picture));
}

TEST_F(Convert, ATypeThatCannotBeWrittenIsToldBeforeAnythingIsRead) {
    const platform::FilePtr in(std::tmpfile());
    ASSERT_GE(std::fputs("what is read is missed", in.get()), 0);
    std::rewind(in.get());
    EXPECT_EQ(*fromFrame(in.get(), path("a.xyz"), ""), "no type has the extension \"xyz\"");
    EXPECT_EQ(*fromFrame(in.get(), path("a.png"), "xyz"), "no type has the key \"xyz\"");
    EXPECT_EQ(std::fgetc(in.get()), 'w');
}

TEST_F(Convert, WhatIsNoRegularFileIsRefusedInWords) {
    std::vector<std::string> names{path(".")};
    std::error_code error;
    if (std::filesystem::is_character_file("/dev/zero", error)) names.emplace_back("/dev/zero");
    for (const std::string& name : names) {
        const Failure failure = toFrame(name, platform::openFile(path("frame"), "w"));
        ASSERT_TRUE(failure) << name;
        EXPECT_EQ(*failure, "only regular files can be read, no folders, pipes or devices");
    }
}

TEST_F(Convert, ADeviceIsWrittenDirectlyAndItsReasonTold) {
    std::error_code error;
    const char* full = "/dev/full";
    if (!std::filesystem::is_character_file(full, error)) GTEST_SKIP() << "no such device here";
    const platform::FilePtr in(std::tmpfile());
    const FileBytes frame = frameOf(samplePicture(5, 4, true, false, false));
    ASSERT_EQ(std::fwrite(frame.data(), 1, frame.size(), in.get()), frame.size());
    for (const Codec* codec : allCodecs()) {
        if (!codec->write) continue;
        std::rewind(in.get());
        // Seeking in a device succeeds and leads nowhere: types that patch their files may notice
        // only that.
        EXPECT_EQ(fromFrame(in.get(), full, codec->key), std::strerror(ENOSPC)) << codec->key;
        EXPECT_TRUE(std::filesystem::is_character_file(full));
    }
}

TEST_F(Convert, FilesAreToldByTheirFirstBytes) {
    const Picture picture = samplePicture(6, 5, true, true, false);
    for (const char* name : {"picture", "picture.7", "picture.tga", "picture.jpg"}) {
        write(name, writtenBytes(pngCodec, picture));
        Picture back;
        const Failure failure = load(name, back);
        ASSERT_FALSE(failure) << name << ": " << *failure;
        expectSame(picture, back);
    }
}

TEST_F(Convert, WhatIsNoPictureIsToldFromWhatIsNotThere) {
    write("empty.png", {});
    write("text.png", fileOf("hello, world"));
    write("text", fileOf("hello, world"));
    write("text.tga", fileOf("hello, world, this is no Targa file"));
    struct Row {
        const char *name, *reason;
    };
    const Row rows[] = {
        {"empty.png", "the file is empty"},
        {"text.png", "not a picture of the type PNG"},
        {"text", "not a picture of a known type"},
        {"missing.png", std::strerror(ENOENT)},
    };
    for (const Row& row : rows) {
        Picture picture;
        const Failure failure = load(row.name, picture);
        ASSERT_TRUE(failure) << row.name;
        EXPECT_EQ(*failure, row.reason);
    }
    Picture picture;
    EXPECT_TRUE(load("text.tga", picture));
    EXPECT_TRUE(load(".", picture));  // a folder
}

TEST_F(Convert, OfSeveralPicturesTheFirstIsTaken) {
    const Picture first = samplePicture(5, 4, true, false, false);
    const Picture second = samplePicture(9, 9, false, false, false);
    const std::string name = path("two.iff");
    ImageWriter writer;
    ASSERT_EQ(writer.open(name), iffOk);
    for (const Picture* picture : {&first, &second}) {
        if (writer.header().width != 0) {
            ASSERT_EQ(writer.nextImage(), iffOk);
        }
        ASSERT_EQ(
            writer.writeHeader(picture->width, picture->height, picture->colour ? imageColour : 0u),
            iffOk);
        ASSERT_EQ(writer.setRowsFromLast(true), iffOk);
        ASSERT_EQ(writer.beginImageData(), iffOk);
        for (uint32_t y = 0; y < picture->height; ++y)
            ASSERT_EQ(writer.writeScanline(reinterpret_cast<const uint32_t*>(picture->row(y))),
                      iffOk);
    }
    ASSERT_EQ(writer.close(), iffOk);
    Picture back;
    const Failure failure = load("two.iff", back);
    ASSERT_FALSE(failure) << *failure;
    expectSame(first, back);
}

TEST_F(Convert, FramesOfEveryCompressionAreRead) {
    for (const uint32_t compression : {compressNone, compressRle, compressQrl})
        for (int shape = 0; shape < 8; ++shape) {
            SCOPED_TRACE(std::to_string(compression) + " shape " + std::to_string(shape));
            const Picture picture = samplePicture(70, 66, shape & 1, shape & 2, shape & 4);
            ImageWriter writer;
            ASSERT_EQ(writer.open(path("frame.iff")), iffOk);
            ASSERT_EQ(writer.setCompression(compression), iffOk);
            ASSERT_EQ(writer.setWideChannels(picture.wide), iffOk);
            ASSERT_EQ(writer.setRowsFromLast(true), iffOk);
            const uint32_t flags =
                (picture.colour ? imageColour : 0u) | (picture.mask ? imageMask : 0u);
            ASSERT_EQ(writer.writeHeader(picture.width, picture.height, flags), iffOk);
            ASSERT_EQ(writer.beginImageData(), iffOk);
            for (uint32_t y = 0; y < picture.height; ++y) {
                const auto* row = reinterpret_cast<const uint32_t*>(picture.row(y));
                ASSERT_EQ(picture.wide ? writer.writeWideScanline(picture.wideRow(y))
                                       : writer.writeScanline(row),
                          iffOk);
            }
            ASSERT_EQ(writer.close(), iffOk);
            Picture back;
            const Failure failure = load("frame.iff", back);
            ASSERT_FALSE(failure) << *failure;
            expectSame(picture, back);
        }
}

TEST_F(Convert, AFrameWithoutColourIsBlackWithItsMaskAndDepth) {
    ImageWriter writer;
    ASSERT_EQ(writer.open(path("black.iff")), iffOk);
    ASSERT_EQ(writer.writeHeader(2, 1, imageBlack | imageMask | imageZ), iffOk);
    ASSERT_EQ(writer.beginImageData(), iffOk);
    const uint32_t pixels[2] = {0x80000000, 0x40FFFFFF};
    const float depth[2] = {1.5f, -2};
    ASSERT_EQ(writer.writeScanline(pixels, depth), iffOk);
    ASSERT_EQ(writer.close(), iffOk);
    Picture back;
    const Failure failure = load("black.iff", back);
    ASSERT_FALSE(failure) << *failure;
    EXPECT_EQ(back.samples[3], 0x80);
    EXPECT_EQ(back.samples[7], 0x40);
    EXPECT_EQ(back.samples[0] | back.samples[4], 0);
    EXPECT_EQ(back.z[1], -2);
}

TEST(MemoryRule, HasARowForEveryType) {
    for (const Codec* codec : allCodecs()) EXPECT_TRUE(hasMemoryRule(codec->key)) << codec->key;
    EXPECT_FALSE(hasMemoryRule("no such type"));
}

TEST(MemoryRule, GrowsWithTheFile) {
    constexpr uint64_t megabyte = 1 << 20;
    struct Row {
        const char* key;
        uint64_t file, justified;
    };
    const Row rows[] = {
        {"png", 0, 64 * megabyte},
        {"png", 16384, 64 * megabyte},
        {"png", 32768, 128 * megabyte},
        {"png", 262144, 1024 * megabyte},
        {"png", UINT64_MAX, 1024 * megabyte},
        {"pnm", 3 * megabyte, 96 * megabyte},
        {"tiff", 1024, 128 * megabyte},
        {"no such type", 3 * megabyte, 96 * megabyte},
    };
    for (const Row& row : rows) EXPECT_EQ(justifiedBytes(row.key, row.file), row.justified);
}

TEST(MemoryRule, IsWhatAPictureIsRefusedBy) {
    Picture picture;
    picture.mostBytes = 4000;
    EXPECT_FALSE(picture.allocate(100, 10, false));
    const char* reason = "the picture would take 1 MB, more than the size of its file justifies";
    EXPECT_EQ(picture.allocateZ(), reason);
    EXPECT_EQ(picture.allocate(100, 10, true), reason);
    EXPECT_EQ(picture.allocate(1001, 1, false), reason);
}

TEST_F(Convert, WhatAFileDoesNotJustifyIsRefusedWhicheverWayItComes) {
    const char* reason = "the picture would take 382 MB, more than the size of its file justifies";
    write("large.hdr", fileOf("#?RADIANCE\n\n-Y 10000 +X 10000\n", {1, 2, 3, 4}));
    Picture picture;
    EXPECT_EQ(load("large.hdr", picture), reason);
    const platform::FilePtr in(platform::openFile(path("large.hdr"), "r"));
    EXPECT_EQ(toFrame(in.get(), platform::openFile(path("frame"), "w")), reason);
}

TEST_F(Convert, TheTestChartIsAFrameWithMask) {
    Picture chart;
    ASSERT_FALSE(makeTestChart(chart));
    EXPECT_EQ(chart.width, 640u);
    EXPECT_EQ(chart.height, 480u);
    EXPECT_TRUE(chart.mask);
    const uint8_t* corner = chart.row(1) + 4;
    EXPECT_GT(corner[0], corner[1] + 100);  // the top left mark is red
    Picture back;
    ASSERT_FALSE(readBytes(tavoCodec, frameOf(chart), back));
    expectSame(chart, back);
}

}  // namespace
