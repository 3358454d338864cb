#include "iff/image_writer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <new>
#include <optional>
#include <span>
#include <system_error>

#include "host/byte_order.h"
#include "iff/iff_writer.h"
#include "iff/result_codes.h"
#include "iff/tile_codec.h"
#include "iff/with_memory.h"
#include "platform/files.h"

namespace vistel {

TileSize tileSize(uint16_t width, uint16_t height) {
    if (width > 16384) return {2048, 16};
    if (width > 8192) return {1024, 32};
    if (width > 4096) return {256, 64};
    if (height > 4096) return {512, 128};
    return {64, 64};
}

uint64_t tileCount(uint32_t width, uint32_t height, TileSize tile) {
    return uint64_t{(width - 1) / tile.width + 1} * ((height - 1) / tile.height + 1);
}

ImageWriter::ImageWriter() = default;
ImageWriter::~ImageWriter() { close(); }

int ImageWriter::open(const std::string& name, const std::string* format) {
    close();
    const int code = withMemory([&] {
        container_ = std::make_unique<IffWriter>();
        return container_->open(name, format ? std::optional(*format) : std::nullopt);
    });
    if (code != iffOk) container_.reset();
    return code;
}

int ImageWriter::openStream(FILE* stream, bool forceStream) {
    close();
    container_.reset(new (std::nothrow) IffWriter);
    if (!container_) {
        // What was handed over is closed whatever happens.
        if (stream && !platform::isStandardStream(stream)) std::fclose(stream);
        return iffNoMemory;
    }
    const int code = container_->openStream(stream, forceStream);
    if (code != iffOk) container_.reset();
    return code;
}

int ImageWriter::close() {
    if (!container_) return iffOk;
    const int ended = inImageData() ? endImage() : iffOk;
    const int closed = container_->close();
    reset();
    return ended != iffOk ? ended : closed;
}

int ImageWriter::abandon() {
    if (!container_) return iffOk;
    const int flushed = bandRows_ > 0 ? flushBand() : failure_;
    const int closed = container_->abandon();
    reset();
    return flushed != iffOk ? flushed : closed;
}

void ImageWriter::reset() {
    container_.reset();
    resetImage();
    compression_ = compressRle;
    wideChannels_ = 0;
    fromLastRow_ = false;
}

void ImageWriter::resetImage() {
    state_ = 0;
    header_ = ImageHeader();
    rowsWritten_ = bandRows_ = 0;
    failure_ = iffOk;
}

bool ImageWriter::inImageData() const {
    return container_ && container_->openType() == iffId("TBMP") && !is(imageEnded);
}

int ImageWriter::setCompression(uint32_t compression) {
    if (!container_ || is(headerWritten) || compression > compressQrl) return iffClientError;
    if (!container_->seekable()) return iffInvalidOnFifo;
    compression_ = compression;
    return iffOk;
}

int ImageWriter::setWideChannels(bool wide) {
    if (is(headerWritten)) return iffClientError;
    wideChannels_ = wide ? 1 : 0;
    return iffOk;
}

int ImageWriter::setRowsFromLast(bool fromLast) {
    if (inImageData()) return iffClientError;
    fromLastRow_ = fromLast;
    return iffOk;
}

int ImageWriter::writeText(const char (&id)[5], std::string_view text) {
    return writeChunk(id, text.data(), text.size());
}

int ImageWriter::writeChunk(const char (&id)[5], const void* body, size_t size) {
    if (!container_ || inImageData()) return iffClientError;
    if (!iffSizeKnown(static_cast<uint32_t>(size)) || size > UINT32_MAX) return iffBadSize;
    return container_->writeChunk(iffId(id), body, static_cast<uint32_t>(size));
}

// "Sat Nov 21 13:31:14 2026".
static std::string dateText() {
    const std::time_t now = std::time(nullptr);
    const char* text = std::ctime(&now);
    std::string date = text ? text : "";
    while (!date.empty() && (date.back() == '\n' || date.back() == '\r')) date.pop_back();
    return date;
}

int ImageWriter::writeHeader(uint32_t width, uint32_t height, uint32_t flags, uint16_t tiles) {
    if (!container_ || is(headerWritten)) return iffClientError;
    if (width == 0 || height == 0) return iffBadImageHeader;
    if (width > longestTiledSide || height > longestTiledSide) return iffBadImageSize;
    tile_ = tileSize(static_cast<uint16_t>(width), static_cast<uint16_t>(height));
    const uint64_t counted = std::min<uint64_t>(tileCount(width, height, tile_), UINT16_MAX);
    header_ = ImageHeader();
    header_.width = width;
    header_.height = height;
    header_.pairFirst = container_->versionFirst;
    header_.pairSecond = container_->versionSecond;
    header_.flags = flags;
    header_.wideChannels = wideChannels_;
    header_.tiles = tiles != 0 ? tiles : static_cast<uint16_t>(counted);
    header_.compression = compression_;
    uint8_t bytes[ImageHeader::encodedSize];
    encodeImageHeader(header_, bytes);
    if (int code = writeChunk("TBHD", bytes, sizeof bytes); code != iffOk) return code;
    state_ |= headerWritten;
    return withMemory([this] { return writeText("DATE", dateText()); });
}

int ImageWriter::beginImageData() {
    if (is(imageEnded)) return iffIoAfterImageEnd;
    if (!container_ || inImageData()) return iffClientError;
    if (!is(headerWritten))
        if (int code = writeHeader(header_.width, header_.height, header_.flags); code != iffOk)
            return code;
    if (int code = allocateBands(); code != iffOk) return code;
    return container_->beginGroup(iffId("FOR4"), iffId("TBMP"));
}

int ImageWriter::allocateBands() {
    const size_t colourBytes = header_.bytesPerPixel() == 0 ? 0 : header_.wideChannels ? 8 : 4;
    const auto fit = [this](Band& band, size_t pixelBytes) {
        band.pixelBytes = pixelBytes;
        band.rowBytes = header_.width * pixelBytes;
        band.bytes.assign(band.rowBytes * tile_.height, 0);
    };
    return withMemory([&] {
        fit(colour_, colourBytes);
        fit(second_, header_.has(imageTwelveBit) ? colourBytes : 0);
        fit(z_, header_.has(imageZ) ? 4 : 0);
        return iffOk;
    });
}

int ImageWriter::canWritePixels() const {
    if (is(imageEnded)) return iffIoAfterImageEnd;
    if (!is(headerWritten)) return iffNoImageHeader;
    if (failure_ != iffOk) return failure_;
    return inImageData() ? iffOk : iffClientError;
}

int ImageWriter::canWriteRow(bool wide, bool colour, bool z, bool second) const {
    if (int code = canWritePixels(); code != iffOk) return code;
    if (is(pageMode)) return iffLineIoInPageMode;
    if (rowsWritten_ >= header_.height) return iffIoAfterImageEnd;
    if (colour && !colour_.there()) return iffColourIoOnBlack;
    if (second && !second_.there()) return iffNo16BitChannel;
    if (z && !z_.there()) return iffNoZPlane;
    const bool otherWidth = wide != (header_.wideChannels != 0);
    return (colour || second) && otherWidth ? iffClientError : iffOk;
}

template <class Channel>
int ImageWriter::writeRow(const Channel* colour, const float* z, const Channel* second) {
    const bool wide = sizeof(Channel) == 2;
    if (int code = canWriteRow(wide, colour, z, second); code != iffOk) return code;
    const uint32_t y = fromLastRow_ ? header_.height - 1 - rowsWritten_ : rowsWritten_;
    const uint32_t bandRow = y % tile_.height;
    const auto take = [&](Band& band, const void* pixels) {
        if (pixels)
            std::memcpy(band.row(bandRow), pixels, band.rowBytes);
        else if (band.there())
            std::memset(band.row(bandRow), 0, band.rowBytes);
    };
    take(colour_, colour);
    take(second_, second);
    take(z_, z);
    state_ |= lineMode;
    ++rowsWritten_;
    ++bandRows_;
    const bool bandEnds = fromLastRow_ ? bandRow == 0 : bandRow == tile_.height - 1;
    return bandEnds || rowsWritten_ == header_.height ? flushBand() : int{iffOk};
}

int ImageWriter::writeScanline(const uint32_t* colour, const float* z, const uint32_t* second) {
    return writeRow(colour, z, second);
}

int ImageWriter::writeWideScanline(const uint16_t* colour, const float* z, const uint16_t* second) {
    return writeRow(colour, z, second);
}

TileFormat ImageWriter::formatOf(int32_t id) const {
    if (id != iffId("ZBUF")) return colourTileFormat(header_);
    TileFormat format = depthTileFormat();
    if (header_.compression == compressNone) format.compression = compressNone;
    return format;
}

// Empties the bands whatever comes of it: the next row needs the room.
int ImageWriter::flushBand() {
    failure_ = withMemory([this] { return writeBandTiles(); });
    bandRows_ = 0;
    return failure_;
}

// A row that is handed over has the values of a pixel as the machine has them, colours in the order
// red, green, blue, mask: the file's order is that of all bytes the other way round.
static std::array<uint8_t, 8> orderInBand(const TileFormat& format, size_t pixelBytes) {
    std::array<uint8_t, 8> order{};
    size_t count = 0;
    for (int i = 0; i < format.channelCount; ++i)
        for (int byte = 0; byte < format.valueBytes; ++byte)
            order[count++] = static_cast<uint8_t>(
                pixelBytes - 1 - size_t(format.channels[i] * format.valueBytes + byte));
    return order;
}

void ImageWriter::addBandTile(int32_t id, const Band& band, const TileRect& rect) {
    TileSource source;
    if (band.there()) {
        const uint8_t* pixels = band.row(rect.y1 % tile_.height) + rect.x1 * band.pixelBytes;
        const auto order = orderInBand(formatOf(id), band.pixelBytes);
        source = {pixels, band.pixelBytes, band.rowBytes, order};
    }
    bandTiles_.push_back({id, rect, source, {}});
}

// The tiles from that one on. Without a thread they are not packed, and the result is none.
std::future<void> ImageWriter::packBeside(size_t first) try {
    return std::async(std::launch::async, [this, first] {
        for (BandTile& tile : std::span(bandTiles_).subspan(first)) {
            const auto data = encoderBeside_.encode(formatOf(tile.id), tile.rect, tile.source);
            tile.packed.assign(data.begin(), data.end());
        }
    });
} catch (const std::system_error&) {
    return {};
}

int ImageWriter::writeBandTiles() {
    const uint32_t firstRow =
        fromLastRow_ ? header_.height - rowsWritten_ : rowsWritten_ - bandRows_;
    TileRect rect;
    rect.y1 = static_cast<uint16_t>(firstRow);
    rect.y2 = static_cast<uint16_t>(firstRow + bandRows_ - 1);
    bandTiles_.clear();
    for (uint32_t x = 0; x < header_.width; x += tile_.width) {
        rect.x1 = static_cast<uint16_t>(x);
        rect.x2 = static_cast<uint16_t>(std::min(x + tile_.width, header_.width) - 1);
        addBandTile(iffId("RGBA"), colour_, rect);
        if (header_.has(imageTwelveBit)) addBandTile(iffId("RGB2"), second_, rect);
        if (header_.has(imageZ)) addBandTile(iffId("ZBUF"), z_, rect);
    }
    constexpr size_t worthAThread = 8;
    const size_t half = bandTiles_.size() / 2;
    std::future<void> beside;
    if (twoThreads_ && half >= worthAThread) beside = packBeside(half);
    int code = iffOk;
    const auto write = [&](size_t first, size_t end, auto&& one) {
        for (size_t i = first; i < end && code == iffOk; ++i) code = one(bandTiles_[i]);
    };
    const auto packAndWrite = [this](const BandTile& tile) {
        return writeTileChunk(tile.id, tile.rect, tile.source);
    };
    if (!beside.valid()) {
        write(0, bandTiles_.size(), packAndWrite);
        return code;
    }
    write(0, half, packAndWrite);
    beside.get();
    write(half, bandTiles_.size(),
          [this](const BandTile& tile) { return writePacked(tile.id, tile.rect, tile.packed); });
    return code;
}

int ImageWriter::writeTileChunk(int32_t id, const TileRect& rect, const TileSource& source) {
    const TileFormat format = formatOf(id);
    if (rawTileSize(format, rect) > INT32_MAX - 8) return iffBadSize;
    return writePacked(id, rect, encoder_.encode(format, rect, source));
}

int ImageWriter::writePacked(int32_t id, const TileRect& rect, std::span<const uint8_t> data) {
    uint8_t corners[8];
    writeBig16(corners, rect.x1);
    writeBig16(corners + 2, rect.y1);
    writeBig16(corners + 4, rect.x2);
    writeBig16(corners + 6, rect.y2);
    int code = container_->beginChunk(id, static_cast<uint32_t>(8 + data.size()));
    if (code == iffOk) code = container_->write(corners, sizeof corners);
    if (code == iffOk && !data.empty()) code = container_->write(data.data(), data.size());
    return code == iffOk ? container_->endChunk() : code;
}

int ImageWriter::writeTile(const char (&id)[5], const TileRect& rect, const uint8_t* raw) {
    if (int code = canWritePixels(); code != iffOk) return code;
    if (is(lineMode)) return iffPageIoInScanlineMode;
    if (int code = checkTileRect(rect, header_); code != iffOk) return code;
    const int32_t kind = iffId(id);
    const bool known = kind == iffId("RGBA") || kind == iffId("RGB2") || kind == iffId("ZBUF");
    if (!known) return iffClientError;
    if (kind == iffId("ZBUF") && !header_.has(imageZ)) return iffNoZPlane;
    if (kind == iffId("RGB2") && !header_.has(imageTwelveBit)) return iffNo16BitChannel;
    state_ |= pageMode;
    const auto pixelBytes = static_cast<size_t>(formatOf(kind).pixelBytes());
    const TileSource source{raw, pixelBytes, rect.width() * pixelBytes};
    failure_ = withMemory([&] { return writeTileChunk(kind, rect, source); });
    return failure_;
}

int ImageWriter::endImage() {
    if (is(imageEnded)) return iffOk;
    if (!inImageData()) return iffClientError;
    int code = bandRows_ > 0 ? flushBand() : failure_;
    const bool partial = !is(pageMode) && rowsWritten_ < header_.height;
    if (code == iffOk && partial) code = iffPartialImageIo;
    const int ended = container_->endGroup();
    state_ |= imageEnded;
    return code != iffOk ? code : ended;
}

int ImageWriter::nextImage() {
    if (!container_) return iffClientError;
    if (inImageData())
        if (int code = endImage(); code != iffOk) return code;
    if (int code = container_->endGroup(); code != iffOk) return code;
    resetImage();
    return container_->beginGroup(iffId("FOR4"), iffId("CIMG"));
}

}  // namespace vistel
