// PNG where there is no libpng: read by stb_image, written with zlib alone. Samples are kept as
// they are stored: no gamma, no multiplication by the mask.

#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "codecs.h"
#include "file_starts.h"
#include "packed_rows.h"
#include "stb_reading.h"

namespace vistel {

namespace {

Failure read(const SourceFile& source, Picture& picture) {
    return readByStb(source, "a PNG", picture);
}

// --- writing ---

//  offset  width  chunk (big-endian)
//       0      4  size of the body
//       4      4  name
//       8         body
//              4  CRC of name and body
bool writeChunk(FILE* file, const char (&name)[5], const uint8_t* body, size_t size) {
    uint8_t start[8], end[4];
    putNumber32(start, static_cast<uint32_t>(size));
    std::memcpy(start + 4, name, 4);
    uLong crc = crc32(0, start + 4, 4);
    if (size > 0) crc = crc32(crc, body, static_cast<uInt>(size));
    putNumber32(end, static_cast<uint32_t>(crc));
    return std::fwrite(start, 1, 8, file) == 8 &&
           (size == 0 || std::fwrite(body, 1, size, file) == size) &&
           std::fwrite(end, 1, 4, file) == 4;
}

bool writeHeader(FILE* file, const Picture& picture) {
    uint8_t body[13] = {};
    putNumber32(body, picture.width);
    putNumber32(body + 4, picture.height);
    body[8] = picture.wide ? 16 : 8;
    body[9] = static_cast<uint8_t>((picture.colour ? 2 : 0) | (picture.mask ? 4 : 0));
    return std::fwrite(pngStart, 1, 8, file) == 8 && writeChunk(file, "IHDR", body, sizeof body);
}

// Of left, above and above left the one that lies nearest to left + above - above left.
int paeth(int left, int above, int corner) {
    const int guess = left + above - corner;
    const int toLeft = std::abs(guess - left), toAbove = std::abs(guess - above);
    const int toCorner = std::abs(guess - corner);
    if (toLeft <= toAbove && toLeft <= toCorner) return left;
    return toAbove <= toCorner ? above : corner;
}

// A row of big-endian bytes, filtered: what is stored is the difference to what each byte's
// neighbours let expect. The filter whose differences are smallest in sum is taken.
class RowFilter {
 public:
    RowFilter(size_t rowBytes, size_t pixelBytes)
        : pixelBytes_(pixelBytes), above_(rowBytes), best_(rowBytes + 1), tried_(rowBytes + 1) {}

    const std::vector<uint8_t>& apply(const std::vector<uint8_t>& row) {
        uint64_t least = UINT64_MAX;
        for (const uint8_t filter : {1, 2, 4}) {
            const uint64_t sum = tryFilter(row, filter);
            if (sum >= least) continue;
            least = sum;
            best_.swap(tried_);
        }
        above_ = row;
        return best_;
    }

 private:
    uint64_t tryFilter(const std::vector<uint8_t>& row, uint8_t filter) {
        uint64_t sum = 0;
        tried_[0] = filter;
        for (size_t i = 0; i < row.size(); ++i) {
            const int left = i < pixelBytes_ ? 0 : row[i - pixelBytes_];
            const int corner = i < pixelBytes_ ? 0 : above_[i - pixelBytes_];
            const int guess = filter == 1   ? left
                              : filter == 2 ? above_[i]
                                            : paeth(left, above_[i], corner);
            const auto difference = static_cast<int8_t>(row[i] - guess);
            tried_[i + 1] = static_cast<uint8_t>(difference);
            sum += static_cast<uint64_t>(std::abs(int{difference}));
        }
        return sum;
    }

    size_t pixelBytes_;
    std::vector<uint8_t> above_, best_, tried_;
};

// The packed rows, cut into chunks.
class PackedData {
 public:
    explicit PackedData(FILE* file) : file_(file), room_(size_t{1} << 16) {
        ready_ = deflateInit(&stream_, 3) == Z_OK;
    }
    ~PackedData() { deflateEnd(&stream_); }
    PackedData(const PackedData&) = delete;
    PackedData& operator=(const PackedData&) = delete;

    bool add(const std::vector<uint8_t>& bytes) {
        stream_.next_in = const_cast<Bytef*>(bytes.data());
        stream_.avail_in = static_cast<uInt>(bytes.size());
        while (ready_ && stream_.avail_in > 0) ready_ = step(Z_NO_FLUSH) == Z_OK;
        return ready_;
    }
    bool finish() {
        int result = Z_OK;
        while (ready_ && result == Z_OK) result = step(Z_FINISH);
        return ready_ && result == Z_STREAM_END;
    }

 private:
    int step(int flush) {
        stream_.next_out = room_.data();
        stream_.avail_out = static_cast<uInt>(room_.size());
        const int result = deflate(&stream_, flush);
        const size_t size = room_.size() - stream_.avail_out;
        if (size > 0 && !writeChunk(file_, "IDAT", room_.data(), size)) return Z_ERRNO;
        return result;
    }

    FILE* file_;
    std::vector<uint8_t> room_;
    z_stream stream_{};
    bool ready_;
};

void packBytes(const Picture& picture, uint32_t y, std::vector<uint16_t>& words,
               std::vector<uint8_t>& row) {
    const int channels = channelsOf(picture);
    if (!picture.wide) return packRow(picture.row(y), picture.width, channels, row.data());
    packRow(picture.wideRow(y), picture.width, channels, words.data());
    for (size_t i = 0; i < row.size() / 2; ++i) putNumber16(row.data() + 2 * i, words[i]);
}

Failure write(const Picture& picture, const TargetFile& target) {
    const size_t pixelBytes = size_t(channelsOf(picture)) * (picture.wide ? 2 : 1);
    const size_t rowBytes = pixelBytes * picture.width;
    std::vector<uint8_t> row(rowBytes);
    std::vector<uint16_t> words(picture.rowSamples());
    RowFilter filter(rowBytes, pixelBytes);
    PackedData data(target.file);
    bool written = writeHeader(target.file, picture);
    for (uint32_t y = 0; written && y < picture.height; ++y) {
        packBytes(picture, y, words, row);
        written = data.add(filter.apply(row));
    }
    if (written && data.finish() && writeChunk(target.file, "IEND", nullptr, 0)) return {};
    return cannotWrite();
}

}  // namespace

const Codec pngCodec = {"png", isPng, read, write};

}  // namespace vistel
