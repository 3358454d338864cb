// Where the writer writes to: standard output in all its forms, and the converter's pipe.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>

#include "host/byte_order.h"
#include "iff/iff_writer.h"
#include "iff/image_read_back.h"
#include "iff/writer_child.h"
#include "platform/process.h"

namespace vistel {
namespace {

namespace fs = std::filesystem;
using test::Bytes;
using test::TemporaryFile;
using test::WriterRole;

// Runs a command to its end; its status.
int run(const std::string& command, WriterRole role) {
    test::setWriterRole(role);
    const int status = platform::closePipe(platform::openPipe(command, "w"));
    test::setWriterRole(WriterRole::none);
    return status;
}

void expectChildImage(const Bytes& bytes) {
    test::Loading load(bytes);
    ASSERT_EQ(load.run(), iffOk);
    for (const FrameStore& frame : load.frames) {
        EXPECT_EQ(frame.header.flags, test::childImageFlags);
        EXPECT_EQ(test::pixelsOf(frame), test::samplePicture(frame.header));
        EXPECT_EQ(frame.z.row(66)[69], test::sampleDepth(69, 66));
    }
    EXPECT_FALSE(load.frames.empty());
}

// The first group's size field.
uint32_t rootSize(const Bytes& bytes, size_t at = 0) {
    (void)bytes.data.at(at + 7);
    return readBig32(&bytes.data[at + 4]);
}

TEST(StandardOutput, AsAFileGetsSizes) {
    const TemporaryFile file;
    const std::string redirection = "> \"" + file.name() + "\"";
    EXPECT_EQ(run(platform::quotedCommand(platform::programPath(), "x", redirection),
                  WriterRole::writeToOutput),
              0);
    const Bytes bytes = file.read();
    EXPECT_EQ(rootSize(bytes) + 8, bytes.size());
    expectChildImage(bytes);
}

TEST(StandardOutput, AppendedToAFileLeavesWhatIsThere) {
    const TemporaryFile file;
    const std::string redirection = ">> \"" + file.name() + "\"";
    const std::string command = platform::quotedCommand(platform::programPath(), "x", redirection);
    EXPECT_EQ(run(command, WriterRole::writeToOutput), 0);
    const Bytes once = file.read();
    expectChildImage(once);
    EXPECT_EQ(run(command, WriterRole::writeToOutput), 0);
    const Bytes twice = file.read();
    EXPECT_EQ(twice.size(), 2 * once.size());
    EXPECT_EQ(twice.cut(once.size()), once);
    expectChildImage(twice);
    test::Loading load(twice);
    EXPECT_EQ(load.run(), iffOk);
    EXPECT_EQ(load.frames.size(), 2u);
}

TEST(StandardOutput, AsAPipeGetsNoSizes) {
    test::setWriterRole(WriterRole::writeToOutput);
    FILE* const pipe =
        platform::openPipe(platform::quotedCommand(platform::programPath(), "x", ""), "r");
    Bytes bytes;
    for (int byte; (byte = std::fgetc(pipe)) != EOF;) bytes.u8(unsigned(byte));
    EXPECT_EQ(platform::closePipe(pipe), 0);
    test::setWriterRole(WriterRole::none);
    EXPECT_EQ(rootSize(bytes), 0x80000002u);
    expectChildImage(bytes);
}

TEST(Appending, TakesAFileForAPipe) {
    TemporaryFile file{Bytes("what was there, ")};
    FILE* const stream = platform::openFile(file.name(), "a");
    if (!platform::streamStatus(stream).appends) {
        std::fclose(stream);
        GTEST_SKIP() << "this system does not tell";
    }
    IffWriter writer;
    ASSERT_EQ(writer.openStream(stream), iffOk);
    EXPECT_FALSE(writer.seekable());
    EXPECT_EQ(writer.close(), iffOk);
    EXPECT_EQ(file.read(), Bytes("what was there, ").openGroup("FOR4", "CIMG", {}, 0x80000002));
}

// --- the converter -------------------------------------------------------------------------------

TEST(Converter, IsGivenTheFormatAndTheName) {
    EXPECT_EQ(converterWriteCommand("/a b/pixconv", "to here", "tiff"),
              platform::quotedCommand("/a b/pixconv", "-t tiff", "to here", ""));
    EXPECT_EQ(converterWriteCommand("/a b/pixconv", "to here", ""),
              platform::quotedCommand("/a b/pixconv", "to here", ""));
}

// This program under other names in a folder of its own, where nothing else is beside it.
class Conversion : public testing::Test {
 protected:
    void SetUp() override {
        const fs::path self(platform::programPath());
        ending_ = self.extension().string();
        // A folder that the program's own volume has, so that it can be linked.
        folder_ = self.parent_path() / ("writer outputs " + std::to_string(std::random_device{}()));
        fs::create_directories(folder_ / "on the path");
        before_ = platform::environmentVariable("PATH").value_or("");
        link("saver");
        test::setKeptName(name("kept"));
    }
    void TearDown() override {
        platform::setEnvironmentVariable("PATH", before_);
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    void link(const std::string& as) {
        const fs::path to = folder_ / (as + ending_);
        std::error_code failed;
        fs::create_hard_link(platform::programPath(), to, failed);
        if (failed) fs::copy_file(platform::programPath(), to);
    }
    std::string name(const std::string& of) { return (folder_ / of).string(); }
    static Bytes contentOf(const std::string& file) {
        std::ifstream stream(fs::path(file), std::ios::binary);
        Bytes bytes;
        bytes.data.assign(std::istreambuf_iterator<char>(stream), {});
        return bytes;
    }
    // The saver's status.
    int save(const std::string& target, const std::string& words) {
        return run(platform::quotedCommand(name("saver" + ending_), target, words),
                   WriterRole::save);
    }
    void expectConverted(const std::string& arguments) {
        const Bytes kept = contentOf(name("kept"));
        const std::string text(kept.data.begin(), kept.data.end());
        ASSERT_EQ(text.substr(0, arguments.size()), arguments);
        const Bytes image(std::string_view(text).substr(arguments.size()));
        EXPECT_EQ(rootSize(image), 0x80000002u);
        expectChildImage(image);
    }
    std::string ending_, before_;
    fs::path folder_;
};

TEST_F(Conversion, GoesThroughTheConverterBesideTheProgram) {
    link("pixconv");
    EXPECT_EQ(save(name("a picture.tif"), "tiff"), 0);
    expectConverted("-t\ntiff\n" + name("a picture.tif") + "\n\n");
    EXPECT_FALSE(fs::exists(name("a picture.tif")));  // this converter keeps it elsewhere
}

TEST_F(Conversion, GoesThroughTheConverterOnThePath) {
    link("on the path/pixconv");
    const char* separator = ending_.empty() ? ":" : ";";
    platform::setEnvironmentVariable("PATH", name("on the path") + separator + before_);
    EXPECT_EQ(save(name("a picture"), ""), 0);
    expectConverted(name("a picture") + "\n\n");
}

TEST_F(Conversion, WithoutAConverterWritesTheFileItself) {
    platform::setEnvironmentVariable("PATH", name("on the path"));
    EXPECT_EQ(save(name("a picture"), "tiff"), 0);
    EXPECT_FALSE(fs::exists(name("kept")));
    const Bytes image = contentOf(name("a picture"));
    EXPECT_EQ(rootSize(image) + 8, image.size());
    expectChildImage(image);
}

TEST_F(Conversion, ThatFailsIsABrokenPipe) {
    link("pixconv");
    EXPECT_EQ(save(name("a picture"), "tiff refuse"), -iffBrokenPipe);
    expectConverted("-t\ntiff\n" + name("a picture") + "\n\n");
}

}  // namespace
}  // namespace vistel
