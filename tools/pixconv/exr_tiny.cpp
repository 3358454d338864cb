// OpenEXR by tinyexr, where the type's own library is not there. Colour is linear light and becomes
// 8 bits by the sRGB curve; the mask is linear; a depth channel is kept. The picture is the file's
// display window: what the file holds outside is left out, what it does not hold is black and
// clear. The file is held in memory as a whole.

#include <tinyexr.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "codecs.h"
#include "exr_channels.h"
#include "exr_window.h"
#include "file_starts.h"
#include "samples.h"

namespace vistel {

namespace {

// What the library may take for the channels, all of which it unpacks.
constexpr uint64_t mostChannelBytes = 2 * mostPictureBytes;

// --- reading ---

struct Reader {
    EXRVersion version{};
    EXRHeader header;
    EXRImage image;
    const char* error = nullptr;
    Reader() {
        InitEXRHeader(&header);
        InitEXRImage(&image);
    }
    ~Reader() {
        FreeEXRImage(&image);
        FreeEXRHeader(&header);
        if (error) FreeEXRErrorMessage(error);
    }
    Failure failure() const {
        return error ? "the file is damaged: " + std::string(error) : "the file is damaged";
    }
};

ExrExtent extentOf(const EXRBox2i& box) { return {box.min_x, box.min_y, box.max_x, box.max_y}; }

Failure checkHeader(const EXRHeader& header, uint64_t fileSize) {
    const ExrExtent data = extentOf(header.data_window);
    const ExrExtent display = extentOf(header.display_window);
    if (!data.usable() || !display.usable()) return "the size of the picture is beyond reason";
    const uint64_t pixels = static_cast<uint64_t>(data.width) * static_cast<uint64_t>(data.height);
    if (header.num_channels < 1 || pixels * 4 * uint64_t(header.num_channels) > mostChannelBytes)
        return "the picture has too many or too large channels";
    for (int i = 0; i < header.num_channels; ++i)
        if (header.pixel_types[i] < TINYEXR_PIXELTYPE_UINT ||
            header.pixel_types[i] > TINYEXR_PIXELTYPE_FLOAT)
            return "the file is damaged";
    if (!header.tiled) return {};
    if (header.tile_size_x < 1 || header.tile_size_y < 1 || header.tile_size_x > longestExrSide ||
        header.tile_size_y > longestExrSide)
        return "the file is damaged";
    // Eight bytes of the file point to each tile.
    const uint64_t tiles = ((uint64_t(data.width) - 1) / uint64_t(header.tile_size_x) + 1) *
                           ((uint64_t(data.height) - 1) / uint64_t(header.tile_size_y) + 1);
    if (tiles * 8 > fileSize) return "the file ends early";
    const uint64_t tilePixels = uint64_t(header.tile_size_x) * uint64_t(header.tile_size_y);
    if (tiles * tilePixels * 4 * uint64_t(header.num_channels) > mostChannelBytes)
        return "the picture has too many or too large channels";
    return {};
}

// The place of a channel among the file's; below 0 when it is not there.
int indexOf(const EXRHeader& header, const std::string& name) {
    for (int i = 0; !name.empty() && i < header.num_channels; ++i)
        if (name == header.channels[i].name) return i;
    return -1;
}

struct Used {
    int colour[3], mask, depth;  // places in the file
};

float sampleAt(const EXRHeader& header, unsigned char** planes, int channel, size_t at) {
    if (header.pixel_types[channel] == TINYEXR_PIXELTYPE_UINT)
        return static_cast<float>(reinterpret_cast<const uint32_t*>(planes[channel])[at]);
    return reinterpret_cast<const float*>(planes[channel])[at];
}

// A block of pixels whose first lies at (left, top) of the picture, perhaps outside of it.
void storeBlock(const EXRHeader& header, unsigned char** planes, const Used& used, int64_t left,
                int64_t top, int64_t width, int64_t height, size_t stride, Picture& picture) {
    for (int64_t y = std::max<int64_t>(-top, 0); y < height && top + y < picture.height; ++y)
        for (int64_t x = std::max<int64_t>(-left, 0); x < width && left + x < picture.width; ++x) {
            const size_t at = static_cast<size_t>(y) * stride + static_cast<size_t>(x);
            const auto row = static_cast<uint32_t>(top + y);
            uint8_t* pixel = picture.row(row) + 4 * (left + x);
            for (int i = 0; i < 3; ++i)
                if (used.colour[i] >= 0)
                    pixel[i] = byteFromLinear(sampleAt(header, planes, used.colour[i], at));
            if (used.mask >= 0) pixel[3] = byteFromMask(sampleAt(header, planes, used.mask, at));
            if (used.depth >= 0)
                picture.zRow(row)[left + x] = sampleAt(header, planes, used.depth, at);
        }
}

void storeImage(const Reader& reader, const Used& used, Picture& picture) {
    const EXRHeader& header = reader.header;
    const int64_t left = int64_t{header.data_window.min_x} - header.display_window.min_x;
    const int64_t top = int64_t{header.data_window.min_y} - header.display_window.min_y;
    const EXRImage& image = reader.image;
    if (image.images)
        storeBlock(header, image.images, used, left, top, image.width, image.height,
                   static_cast<size_t>(image.width), picture);
    for (int i = 0; image.tiles && i < image.num_tiles; ++i) {
        const EXRTile& tile = image.tiles[i];
        if (!tile.images || tile.level_x != 0 || tile.level_y != 0) continue;
        storeBlock(header, tile.images, used, left + int64_t{tile.offset_x} * header.tile_size_x,
                   top + int64_t{tile.offset_y} * header.tile_size_y, tile.width, tile.height,
                   static_cast<size_t>(header.tile_size_x), picture);
    }
    for (uint32_t y = 0; y < picture.height; ++y) completeRow(picture, y);
}

Failure findChannels(const EXRHeader& header, ExrChannels& names, Used& used) {
    std::vector<std::string> all;
    for (int i = 0; i < header.num_channels; ++i) all.emplace_back(header.channels[i].name);
    if (Failure failure = findExrChannels(all, names)) return failure;
    for (int i = 0; i < 3; ++i) used.colour[i] = indexOf(header, names.colour[i]);
    used.mask = indexOf(header, names.mask);
    used.depth = indexOf(header, names.depth);
    for (int i = 0; i < header.num_channels; ++i)
        if (header.channels[i].x_sampling != 1 || header.channels[i].y_sampling != 1)
            return "channels of lower resolution cannot be read";
    return {};
}

Failure readMemory(const std::vector<uint8_t>& bytes, Picture& picture) {
    Reader reader;
    if (ParseEXRVersionFromMemory(&reader.version, bytes.data(), bytes.size()) != TINYEXR_SUCCESS)
        return "the file is damaged";
    if (reader.version.multipart) return "files of several parts cannot be read";
    if (reader.version.non_image) return "deep pictures cannot be read";
    EXRHeader& header = reader.header;
    if (ParseEXRHeaderFromMemory(&header, &reader.version, bytes.data(), bytes.size(),
                                 &reader.error) != TINYEXR_SUCCESS)
        return reader.failure();
    if (Failure failure = checkHeader(header, bytes.size())) return failure;
    ExrChannels names;
    Used used;
    if (Failure failure = findChannels(header, names, used)) return failure;
    const ExrExtent display = extentOf(header.display_window);
    Failure failure = picture.allocate(static_cast<uint32_t>(display.width),
                                       static_cast<uint32_t>(display.height), false);
    if (!failure && used.depth >= 0) failure = picture.allocateZ();
    if (failure) return failure;
    picture.colour = !names.grey;
    picture.mask = used.mask >= 0;
    for (int i = 0; i < header.num_channels; ++i)
        if (header.pixel_types[i] == TINYEXR_PIXELTYPE_HALF)
            header.requested_pixel_types[i] = TINYEXR_PIXELTYPE_FLOAT;
    if (LoadEXRImageFromMemory(&reader.image, &header, bytes.data(), bytes.size(), &reader.error) !=
        TINYEXR_SUCCESS) {
        InitEXRImage(&reader.image);  // the library has freed what it held, and does not say so
        return reader.failure();
    }
    // The library marks what the planes hold now.
    storeImage(reader, used, picture);
    return {};
}

Failure read(const SourceFile& source, Picture& picture) {
    std::vector<uint8_t> bytes;
    if (Failure failure = readWhole(source, bytes)) return failure;
    return readMemory(bytes, picture);
}

// --- writing ---

struct Plane {
    const char* name;
    int stored;  // TINYEXR_PIXELTYPE_...
    std::vector<float> values;
};

// In the order of their names, as the type has it.
std::vector<Plane> planesOf(const Picture& picture) {
    const size_t pixels = size_t{picture.width} * picture.height;
    const auto fill = [&](const char* name, size_t sample) {
        Plane plane{name, TINYEXR_PIXELTYPE_HALF, std::vector<float>(pixels)};
        float* to = plane.values.data();
        for (uint32_t y = 0; y < picture.height; ++y)
            for (size_t i = sample; i < picture.rowSamples(); i += 4)
                *to++ = sample == 3 ? static_cast<float>(wordSample(picture, y, i)) / 65535.0f
                                    : lightOfSample(picture, y, i);
        return plane;
    };
    std::vector<Plane> planes;
    if (picture.mask) planes.push_back(fill("A", 3));
    if (picture.colour) {
        planes.push_back(fill("B", 2));
        planes.push_back(fill("G", 1));
        planes.push_back(fill("R", 0));
    } else {
        planes.push_back(fill("Y", 0));
    }
    if (!picture.z.empty())
        planes.push_back({"Z", TINYEXR_PIXELTYPE_FLOAT, {picture.z.begin(), picture.z.end()}});
    return planes;
}

Failure write(const Picture& picture, const TargetFile& target) {
    std::vector<Plane> planes = planesOf(picture);
    std::vector<EXRChannelInfo> channels(planes.size());
    std::vector<int> given(planes.size(), TINYEXR_PIXELTYPE_FLOAT), stored;
    std::vector<unsigned char*> values;
    for (size_t i = 0; i < planes.size(); ++i) {
        std::strcpy(channels[i].name, planes[i].name);
        stored.push_back(planes[i].stored);
        values.push_back(reinterpret_cast<unsigned char*>(planes[i].values.data()));
    }
    EXRHeader header;
    InitEXRHeader(&header);
    header.num_channels = static_cast<int>(planes.size());
    header.channels = channels.data();
    header.pixel_types = given.data();
    header.requested_pixel_types = stored.data();
    header.compression_type = TINYEXR_COMPRESSIONTYPE_ZIP;
    EXRImage image;
    InitEXRImage(&image);
    image.num_channels = header.num_channels;
    image.images = values.data();
    image.width = static_cast<int>(picture.width);
    image.height = static_cast<int>(picture.height);
    unsigned char* memory = nullptr;
    const char* error = nullptr;
    const size_t size = SaveEXRImageToMemory(&image, &header, &memory, &error);
    if (error) FreeEXRErrorMessage(error);
    const bool written = size > 0 && std::fwrite(memory, 1, size, target.file) == size;
    std::free(memory);
    return written ? Failure() : cannotWrite();
}

}  // namespace

const Codec exrCodec = {"exr", isExr, read, write};

}  // namespace vistel
