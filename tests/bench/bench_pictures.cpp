#include "bench_pictures.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "host/byte_order.h"
#include "iff/image_writer.h"

namespace vistel::bench {

const char* pictureName(PictureKind kind) {
    static constexpr const char* names[] = {"flat", "typical", "raw", "depth"};
    return names[static_cast<int>(kind)];
}

ImageHeader Picture::header() const {
    ImageHeader header;
    header.width = width;
    header.height = height;
    header.flags = imageColour | imageMask;
    if (!z.empty()) header.flags |= imageZ;
    return header;
}

// Noise that depends on its place alone.
static uint32_t noise(uint32_t x, uint32_t y, uint32_t frame) {
    uint32_t hash = x * 0x9E3779B1u ^ y * 0x85EBCA77u ^ (frame + 1) * 0xC2B2AE3Du;
    hash = (hash ^ hash >> 15) * 0x2C1B3C6Du;
    hash = (hash ^ hash >> 12) * 0x297A2D39u;
    return hash ^ hash >> 15;
}

static uint32_t packColour(float red, float green, float blue, uint32_t mask) {
    const auto level = [](float value) {
        return static_cast<uint32_t>(std::clamp(value, 0.0f, 255.0f));
    };
    return level(red) | level(green) << 8 | level(blue) << 16 | mask << 24;
}

struct Sample {
    uint32_t colour;
    float z;
};

// A ball of the scene, lit from the upper left, with or without grain.
struct Ball {
    float x, y, radius, depth;
    float red, green, blue;
    float grain;
};

static constexpr Ball balls[] = {
    {430, 560, 290, 12, 225, 120, 60, 0},   {1010, 500, 220, 15, 90, 150, 215, 14},
    {1490, 640, 300, 18, 120, 190, 90, 5},  {820, 850, 120, 25, 210, 200, 190, 0},
    {1750, 330, 130, 10, 190, 80, 130, 22},
};

static constexpr float horizon = 400;

static Sample skyAt(uint32_t y) {
    const float height = (static_cast<float>(y) - horizon) / (1080 - horizon);
    return {packColour(150 - 90 * height, 180 - 80 * height, 225 - 40 * height, 0), 1.0e30f};
}

// A floor with fine grain that runs away to the horizon.
static Sample floorAt(uint32_t x, uint32_t y, uint32_t frame) {
    const float depth = 2400 / (horizon + 1 - static_cast<float>(y));
    const uint32_t grain = noise(x, y, frame);
    const float light = 90 + 400 / (depth + 4);
    return {packColour(light + static_cast<float>(grain & 15),
                       light * 0.9f + static_cast<float>(grain >> 8 & 15),
                       light * 0.7f + static_cast<float>(grain >> 16 & 7), 255),
            depth};
}

static Sample ballAt(const Ball& ball, float dx, float dy, uint32_t grainBits) {
    const float square = dx * dx + dy * dy;
    const float nz = std::sqrt(1 - square);
    const float diffuse = std::max(0.0f, -0.5f * dx + 0.55f * dy + 0.67f * nz);
    const float glint = std::pow(diffuse, 24.0f) * 120;
    const float light = 0.15f + 0.85f * diffuse;
    const float grain = ball.grain * static_cast<float>(grainBits & 255) / 255;
    // The last pixels before the outline fade in the mask.
    const float edge = (1 - square) * ball.radius * 0.5f;
    const auto mask = static_cast<uint32_t>(std::clamp(edge * 255, 1.0f, 255.0f));
    return {packColour(ball.red * light + glint + grain, ball.green * light + glint + grain,
                       ball.blue * light + glint + grain, mask),
            ball.depth - nz * ball.radius / 100};
}

static Sample typicalAt(uint32_t x, uint32_t y, uint32_t frame) {
    const Ball* nearest = nullptr;
    float nearestX = 0, nearestY = 0;
    for (const Ball& ball : balls) {
        const float dx = (static_cast<float>(x) - ball.x - static_cast<float>(frame)) / ball.radius;
        const float dy = (static_cast<float>(y) - ball.y) / ball.radius;
        if (dx * dx + dy * dy >= 1 || (nearest && nearest->depth < ball.depth)) continue;
        nearest = &ball;
        nearestX = dx;
        nearestY = dy;
    }
    if (nearest) return ballAt(*nearest, nearestX, nearestY, noise(x, y, frame));
    return static_cast<float>(y) < horizon ? floorAt(x, y, frame) : skyAt(y);
}

// Blocks of one colour, larger than tiles and not in step with them.
static Sample flatAt(uint32_t x, uint32_t y, uint32_t frame) {
    const uint32_t block = noise((x + frame) / 480, y / 270, 7);
    return {block, 0};
}

static Sample noiseAt(uint32_t x, uint32_t y, uint32_t frame) { return {noise(x, y, frame), 0}; }

// Particles between very near and very far hang before the left third of the scene.
static Sample depthSceneAt(uint32_t x, uint32_t y, uint32_t frame) {
    Sample sample = typicalAt(x, y, frame);
    if (x >= 640) return sample;
    const uint32_t bits = noise(x, y, frame + 77);
    sample.z = std::ldexp(1 + static_cast<float>(bits & 0x7FFFFF) / 8388608.0f,
                          static_cast<int>(bits >> 24) - 125);
    return sample;
}

Picture makePicture(PictureKind kind, int number) {
    using SampleAt = Sample (*)(uint32_t x, uint32_t y, uint32_t frame);
    static constexpr SampleAt sources[] = {flatAt, typicalAt, noiseAt, depthSceneAt};
    const SampleAt source = sources[static_cast<int>(kind)];
    Picture picture;
    const size_t pixels = size_t{picture.width} * picture.height;
    picture.colour.resize(pixels);
    if (kind == PictureKind::depth) picture.z.resize(pixels);
    for (size_t i = 0; i < pixels; ++i) {
        const Sample sample =
            source(static_cast<uint32_t>(i % picture.width),
                   static_cast<uint32_t>(i / picture.width), static_cast<uint32_t>(number));
        picture.colour[i] = sample.colour;
        if (!picture.z.empty()) picture.z[i] = sample.z;
    }
    return picture;
}

int writeFrameFile(const Picture& picture, const std::string& path) {
    const ImageHeader header = picture.header();
    ImageWriter writer;
    if (int code = writer.open(path); code != iffOk) return code;
    if (int code = writer.writeHeader(header.width, header.height, header.flags); code != iffOk)
        return code;
    if (int code = writer.beginImageData(); code != iffOk) return code;
    for (uint32_t y = 0; y < picture.height; ++y) {
        const float* const z = picture.z.empty() ? nullptr : picture.depthRow(y);
        if (int code = writer.writeScanline(picture.row(y), z); code != iffOk) return code;
    }
    if (int code = writer.endImage(); code != iffOk) return code;
    return writer.close();
}

// Cuts a plane into tiles; valueAt(i) gives pixel i as the 32-bit number whose big-endian bytes are
// the pixel in file order (mask, blue, green, red; or a float).
template <class ValueAt>
static std::vector<PackedTile> packTiles(const Picture& picture, const TileFormat& format,
                                         ValueAt valueAt) {
    const TileSize size =
        tileSize(static_cast<uint16_t>(picture.width), static_cast<uint16_t>(picture.height));
    std::vector<PackedTile> tiles;
    std::vector<uint8_t> raw;
    TileEncoder encoder;
    for (uint32_t y = 0; y < picture.height; y += size.height)
        for (uint32_t x = 0; x < picture.width; x += size.width) {
            PackedTile tile;
            tile.rect = {static_cast<uint16_t>(x), static_cast<uint16_t>(y),
                         static_cast<uint16_t>(std::min(x + size.width, picture.width) - 1),
                         static_cast<uint16_t>(std::min(y + size.height, picture.height) - 1)};
            raw.resize(rawTileSize(format, tile.rect));
            uint8_t* out = raw.data();
            for (uint32_t v = tile.rect.y1; v <= tile.rect.y2; ++v)
                for (uint32_t u = tile.rect.x1; u <= tile.rect.x2; ++u, out += 4)
                    writeBig32(out, valueAt(size_t{v} * picture.width + u));
            const auto pixelBytes = static_cast<size_t>(format.pixelBytes());
            const auto data = encoder.encode(
                format, tile.rect, {raw.data(), pixelBytes, tile.rect.width() * pixelBytes});
            tile.data.assign(data.begin(), data.end());
            tiles.push_back(std::move(tile));
        }
    return tiles;
}

std::vector<PackedTile> colourTiles(const Picture& picture) {
    return packTiles(picture, colourTileFormat(picture.header()),
                     [&](size_t i) { return picture.colour[i]; });
}

std::vector<PackedTile> depthTiles(const Picture& picture) {
    return packTiles(picture, depthTileFormat(),
                     [&](size_t i) { return std::bit_cast<uint32_t>(picture.z[i]); });
}

size_t packedBytes(const std::vector<PackedTile>& tiles) {
    size_t bytes = 0;
    for (const PackedTile& tile : tiles) bytes += tile.data.size();
    return bytes;
}

}  // namespace vistel::bench
