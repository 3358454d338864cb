// OpenEXR files made by hand: channels, windows, headers that lie.
#include <bit>

#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

struct Window {
    int left, top, right, bottom;  // inclusive
};

struct Channel {
    std::string name;   // in the order of the names
    bool whole = true;  // 32-bit floats, else halfs
};

void put(FileBytes& to, uint64_t value, int bytes) { to += littleEndian(value, bytes); }

void attribute(FileBytes& to, const std::string& name, const std::string& type,
               const FileBytes& body) {
    to += name + '\0' + type + '\0';
    put(to, body.size(), 4);
    to += body;
}

FileBytes box(const Window& window) {
    FileBytes body;
    for (const int side : {window.left, window.top, window.right, window.bottom})
        put(body, uint32_t(side), 4);
    return body;
}

// Puts attributes in front of the others.
FileBytes withAttributes(const FileBytes& file, const FileBytes& attributes) {
    FileBytes longer(file.begin(), file.begin() + 8);
    longer += attributes;
    longer += FileBytes(file.begin() + 8, file.end());
    // Of a file of one pixel: the place of its only block, which ends the file.
    FileBytes place;
    put(place, longer.size() - 12, 8);
    std::copy(place.begin(), place.end(), longer.end() - 20);
    return longer;
}

FileBytes lyingAttribute(const std::string& type, uint32_t size, const FileBytes& body) {
    FileBytes bytes;
    bytes += std::string("lie") + '\0' + type + '\0';
    put(bytes, size, 4);
    return bytes += body;
}

// Uncompressed rows; value(channel, x, y) over the data window, its first pixel being (0, 0).
template <class Value>
FileBytes exr(const std::vector<Channel>& channels, const Window& data, const Window& display,
              Value value) {
    FileBytes file{0x76, 0x2F, 0x31, 0x01, 2, 0, 0, 0}, list, floats;
    for (const Channel& channel : channels) {
        list += channel.name + '\0';
        put(list, channel.whole ? 2 : 1, 4);
        put(list, 0, 4);
        put(list, 1, 4);
        put(list, 1, 4);
    }
    list.push_back(0);
    attribute(file, "channels", "chlist", list);
    attribute(file, "compression", "compression", {0});
    attribute(file, "dataWindow", "box2i", box(data));
    attribute(file, "displayWindow", "box2i", box(display));
    attribute(file, "lineOrder", "lineOrder", {0});
    put(floats, std::bit_cast<uint32_t>(1.0f), 4);
    attribute(file, "pixelAspectRatio", "float", floats);
    attribute(file, "screenWindowCenter", "v2f", FileBytes(8));
    attribute(file, "screenWindowWidth", "float", floats);
    file.push_back(0);
    const int rows = data.bottom - data.top + 1, columns = data.right - data.left + 1;
    size_t rowBytes = 0;
    for (const Channel& channel : channels) rowBytes += size_t(columns) * (channel.whole ? 4 : 2);
    const size_t first = file.size() + size_t(rows) * 8;
    for (int y = 0; y < rows; ++y) put(file, first + size_t(y) * (rowBytes + 8), 8);
    for (int y = 0; y < rows; ++y) {
        put(file, uint32_t(data.top + y), 4);
        put(file, rowBytes, 4);
        for (size_t i = 0; i < channels.size(); ++i)
            for (int x = 0; x < columns; ++x) {
                const float sample = value(int(i), x, y);
                // Halfs are 0, 0.5 or 1 here.
                if (channels[i].whole)
                    put(file, std::bit_cast<uint32_t>(sample), 4);
                else
                    put(file, sample == 1 ? 0x3C00 : sample == 0.5f ? 0x3800 : 0, 2);
            }
    }
    return file;
}

TEST(OpenExr, ChannelsAreFoundByTheirNames) {
    struct Row {
        const char* what;
        std::vector<Channel> channels;
        std::vector<int> samples;
    };
    // Every first channel is 0.25, the second 0.5, the third 1, the fourth 0.
    const Row rows[] = {
        {"colour", {{"B"}, {"G"}, {"R"}}, {255, 188, 137, 255}},
        {"halfs", {{"G", false}, {"R", false}}, {188, 0, 0, 255}},
        {"mask and colour", {{"A"}, {"B"}, {"G"}, {"R"}}, {0, 255, 188, 64}},
        {"luminance", {{"Y"}}, {137, 137, 137, 255}},
        {"luminance and mask", {{"A"}, {"Y"}}, {188, 188, 188, 64}},
        {"a layer", {{"left.B"}, {"left.G"}, {"left.R"}}, {255, 188, 137, 255}},
        {"the picture before its layers", {{"R"}, {"left.R"}}, {137, 0, 0, 255}},
        {"a mask alone", {{"A"}}, {0, 0, 0, 64}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const Window one{0, 0, 0, 0};
        const FileBytes bytes = exr(row.channels, one, one, [](int channel, int, int) {
            const float values[] = {0.25f, 0.5f, 1, 0};
            return values[channel];
        });
        EXPECT_EQ(samplesOf(exrCodec, bytes), row.samples);
    }
}

TEST(OpenExr, DepthComesWithoutColourToo) {
    const Window window{0, 0, 1, 1};
    Picture picture;
    const FileBytes bytes =
        exr({{"Z"}}, window, window, [](int, int x, int y) { return float(x) + 1000 * float(y); });
    const Failure failure = readBytes(exrCodec, bytes, picture);
    ASSERT_FALSE(failure) << *failure;
    EXPECT_EQ(std::vector<float>(picture.z.begin(), picture.z.end()),
              (std::vector<float>{0, 1, 1000, 1001}));
}

TEST(OpenExr, TheDisplayWindowIsThePicture) {
    struct Row {
        const char* what;
        Window data, display;
        std::vector<int> red;  // over the display window
    };
    // Every pixel of the data window is light.
    const Row rows[] = {
        {"inside", {1, 1, 2, 1}, {0, 0, 3, 2}, {0, 0, 0, 0, 0, 255, 255, 0, 0, 0, 0, 0}},
        {"around", {-2, -1, 3, 3}, {0, 0, 1, 1}, {255, 255, 255, 255}},
        {"overlapping", {-1, -1, 0, 0}, {0, 0, 1, 1}, {255, 0, 0, 0}},
        {"apart", {5, 5, 6, 6}, {0, 0, 1, 0}, {0, 0}},
        {"not at the origin", {10, 20, 10, 21}, {9, 20, 10, 21}, {0, 255, 0, 255}},
        {"below zero", {-9, -9, -9, -9}, {-10, -9, -9, -9}, {0, 255}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const FileBytes bytes =
            exr({{"A"}, {"R"}}, row.data, row.display, [](int, int, int) { return 1.0f; });
        Picture picture;
        const Failure failure = readBytes(exrCodec, bytes, picture);
        ASSERT_FALSE(failure) << *failure;
        std::vector<int> red, mask;
        for (size_t i = 0; i < picture.samples.size(); i += 4) {
            red.push_back(picture.samples[i]);
            mask.push_back(picture.samples[i + 3]);
        }
        EXPECT_EQ(red, row.red);
        EXPECT_EQ(mask, row.red);  // clear where the file holds nothing
    }
}

TEST(OpenExr, WideFilesWithManyChannelsAreRead) {
    std::vector<Channel> channels{{"B"}, {"G"}, {"R"}};
    for (int i = 10; i < 80; ++i) channels.push_back({"more." + std::to_string(i)});
    const Window window{0, 0, 4095, 1};
    const FileBytes bytes = exr(channels, window, window,
                                [](int channel, int, int) { return channel == 1 ? 1.0f : 0.0f; });
    Picture picture;
    const Failure failure = readBytes(exrCodec, bytes, picture);
    ASSERT_FALSE(failure) << *failure;
    EXPECT_EQ(picture.width, 4096u);
    const uint8_t* last = picture.row(1) + 4 * 4095;
    EXPECT_EQ((std::vector<int>{last, last + 4}), (std::vector<int>{0, 255, 0, 255}));
}

TEST(OpenExr, WindowsBeyondReasonAreRefused) {
    const Window one{0, 0, 0, 0};
    const FileBytes good = exr({{"R"}}, one, one, [](int, int, int) { return 1.0f; });
    const Window windows[] = {{0, 0, 0x7FFFFFFE, 0},
                              {0, 0, 70000, 0},
                              {0, 0, 65534, 65534},
                              {5, 5, 4, 4},
                              {-0x7FFFFFFF, -0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF}};
    for (const char* name : {"dataWindow", "displayWindow"})
        for (const Window& window : windows) {
            FileBytes bytes = good;
            const std::string text(bytes.begin(), bytes.end());
            const size_t at = text.find(name) + std::strlen(name) + 1 + 6 + 4;
            const FileBytes lie = box(window);
            std::copy(lie.begin(), lie.end(), bytes.begin() + std::ptrdiff_t(at));
            EXPECT_NE(failureOf(exrCodec, bytes), "") << name << " " << &window - windows;
        }
}

TEST(OpenExr, AttributesLargerThanTheFileAreRefusedBeforeTheyAreRead) {
    const Window one{0, 0, 0, 0};
    const FileBytes good = exr({{"R"}}, one, one, [](int, int, int) { return 1.0f; });
    FileBytes text, preview;
    put(text, 0x7FFFFFF0, 4);
    put(preview, 16384, 4);
    put(preview, 16384, 4);
    struct Row {
        const char* type;
        uint32_t size;
        FileBytes body;
    };
    const Row rows[] = {{"string", 0x7FFFFFF0, {}},       {"floatvector", 0x40000000, {}},
                        {"preview", 0x40000008, preview}, {"preview", 8, preview},
                        {"stringvector", 4, text},        {"stringvector", 0x7FFFFFF0, text},
                        {"unheard of", 0x7FFFFFF0, {}},   {"box2i", 0, {}},
                        {"int", 8, FileBytes(8)},         {"chlist", 3, fileOf("abc")},
                        {"floatvector", 5, FileBytes(5)}, {"chlist", 8, FileBytes(8)},
                        {"string", 0xFFFFFFFF, {}}};
    for (const Row& row : rows) {
        const FileBytes bytes = withAttributes(good, lyingAttribute(row.type, row.size, row.body));
        EXPECT_EQ(failureOf(exrCodec, bytes),
                  "the file is damaged: attribute \"lie\" of its header")
            << row.type << " of " << row.size << " bytes";
    }
}

TEST(OpenExr, AttributesThatFitAreRead) {
    const Window one{0, 0, 0, 0};
    const FileBytes good = exr({{"R"}}, one, one, [](int, int, int) { return 1.0f; });
    FileBytes texts, preview, all;
    for (const std::string& word : {std::string("ab"), std::string()}) {
        put(texts, word.size(), 4);
        texts += word;
    }
    put(preview, 2, 4);
    put(preview, 3, 4);
    preview += FileBytes(24, 9);
    attribute(all, "words", "stringvector", texts);
    attribute(all, "icon", "preview", preview);
    attribute(all, "numbers", "floatvector", FileBytes(12));
    attribute(all, "comment", "string", FileBytes(1000, 'x'));
    attribute(all, "odd", "unheard of", FileBytes(7));
    EXPECT_EQ(samplesOf(exrCodec, withAttributes(good, all)), (std::vector<int>{255, 0, 0, 255}));
}

// Files of several parts, the tables of whose blocks would take much.
TEST(OpenExr, EveryPartIsLookedAtBeforeMemoryIsTaken) {
    const Window one{0, 0, 0, 0}, long_{0, 0, 0, 65534};
    const auto partOf = [](const std::string& name, const std::string& type, const Window& data) {
        const FileBytes whole =
            exr({{"R"}}, {0, 0, 0, 0}, {0, 0, 0, 0}, [](int, int, int) { return 1.0f; });
        FileBytes header(whole.begin() + 8, whole.end() - 8 - 12);
        const std::string text(header.begin(), header.end());
        const size_t at = text.find("dataWindow") + 11 + 6 + 4;
        const FileBytes window = box(data);
        std::copy(window.begin(), window.end(), header.begin() + std::ptrdiff_t(at));
        FileBytes attributes;
        FileBytes blocks;
        put(blocks, uint32_t(data.bottom - data.top + 1), 4);
        attribute(attributes, "chunkCount", "int", blocks);
        attribute(attributes, "name", "string", fileOf(name));
        attribute(attributes, "type", "string", fileOf(type));
        return attributes += header;
    };
    const auto fileOfParts = [](uint32_t flags, const std::vector<FileBytes>& parts) {
        FileBytes file{0x76, 0x2F, 0x31, 0x01, 2, 0, 0, 0};
        file[5] = uint8_t(flags >> 8);
        for (const FileBytes& part : parts) file += part;
        file.push_back(0);
        return file;
    };
    const FileBytes flat = partOf("flat", "scanlineimage", one);
    struct Row {
        const char* what;
        FileBytes file;
        const char* failure;
    };
    const Row rows[] = {
        {"many blocks behind one",
         fileOfParts(0x1000, {flat, partOf("long", "scanlineimage", long_)}),
         "the file ends early: in its header"},
        {"deep", fileOfParts(0x1800, {partOf("deep", "deepscanline", one), flat}),
         "deep pictures cannot be read"},
        {"a window beyond reason",
         fileOfParts(0x1000, {flat, partOf("large", "scanlineimage", {0, 0, 0, 0x7FFFFFFE})}),
         "the size of the picture is beyond reason"},
        {"parts without end", fileOfParts(0x1000, std::vector<FileBytes>(2000, flat)),
         "the file has too many parts"},
    };
    for (const Row& row : rows) EXPECT_EQ(failureOf(exrCodec, row.file), row.failure) << row.what;
}

}  // namespace
