// JPEG by libjpeg. A mask is left out when a picture is written.

#include <cstddef>
#include <cstdint>
#include <cstdio>
// The library's header relies on the two above.
#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <cstring>
#include <vector>

#include "codecs.h"
#include "file_starts.h"
#include "jpeg_marks.h"
#include "packed_rows.h"
#include "turned.h"

namespace vistel {

namespace {

// Of a picture: a rendered one should show no blocks.
constexpr int quality = 95;
// Each scan goes through the whole picture: more than this is an attack on time.
constexpr int mostScans = 200;

// The library reports a failure by a jump. The jump passes no destructor: whatever has one lives
// in the caller of the function that the library is called from.
struct Report {
    jpeg_error_mgr manager;
    jmp_buf back;
    char text[JMSG_LENGTH_MAX] = "";
};

void onError(j_common_ptr library) {
    auto* report = reinterpret_cast<Report*>(library->err);
    if (report->text[0] == 0 && library->err->msg_code == JERR_NO_BACKING_STORE)
        std::snprintf(report->text, sizeof report->text, "%s",
                      "unpacking it takes more memory than the size of the file justifies");
    const bool unwritten = library->err->msg_code == JERR_FILE_WRITE && errno != 0;
    if (report->text[0] == 0 && unwritten)
        std::snprintf(report->text, sizeof report->text, "%s", std::strerror(errno));
    if (report->text[0] == 0) library->err->format_message(library, report->text);
    std::longjmp(report->back, 1);
}

void fail(j_common_ptr library, const char* text) {
    auto* report = reinterpret_cast<Report*>(library->err);
    std::snprintf(report->text, sizeof report->text, "%s", text);
    onError(library);
}

void onWarning(j_common_ptr, int) {}

void prepare(Report& report) {
    jpeg_std_error(&report.manager);
    report.manager.error_exit = onError;
    report.manager.emit_message = onWarning;
    report.manager.output_message = [](j_common_ptr) {};
}

// --- reading ---

struct Reader {
    Report report;
    jpeg_progress_mgr progress{};
    jpeg_decompress_struct jpeg{};
    std::vector<uint8_t> row;
    // Rows before the first that the library made up for want of data. Where scan after scan
    // refines the whole picture, only the first scan decides.
    uint32_t goodRows = UINT32_MAX;
    Reader() {
        prepare(report);
        report.manager.emit_message = onMadeUp;
        jpeg.err = &report.manager;
        jpeg.client_data = this;
    }
    ~Reader() { jpeg_destroy_decompress(&jpeg); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

 private:
    static void onMadeUp(j_common_ptr library, int level);
};

// What the library makes up pixels for; nullptr where it does not.
const char* madeUpFor(int message) {
    switch (message) {
        case JWRN_JPEG_EOF:
            return "the file ends early";
        case JWRN_HIT_MARKER:
        case JWRN_HUFF_BAD_CODE:
        case JWRN_MUST_RESYNC:
        case JWRN_BOGUS_PROGRESSION:
            return "the picture data is damaged";
        default:
            return nullptr;
    }
}

// Warnings have a level below 0.
void Reader::onMadeUp(j_common_ptr library, int level) {
    const char* text = level < 0 ? madeUpFor(library->err->msg_code) : nullptr;
    auto* reader = static_cast<Reader*>(library->client_data);
    if (!text || reader->report.text[0] != 0) return;
    std::snprintf(reader->report.text, sizeof reader->report.text, "%s", text);
    const jpeg_decompress_struct& jpeg = reader->jpeg;
    if (jpeg.input_scan_number > 1 && jpeg.progressive_mode) return;
    const uint64_t rows =
        uint64_t{jpeg.input_iMCU_row} * uint64_t(jpeg.max_v_samp_factor) * DCTSIZE;
    // Where colour is stored coarser than light, the last row's is smoothed with the one behind it.
    const uint64_t smoothed = rows > 0 && jpeg.max_v_samp_factor > 1 ? 1 : 0;
    reader->goodRows = uint32_t(std::min<uint64_t>(rows - smoothed, UINT32_MAX));
}

void watchScans(j_common_ptr library) {
    const auto* jpeg = reinterpret_cast<j_decompress_ptr>(library);
    if (jpeg->input_scan_number > mostScans) fail(library, "the file has too many scans");
}

// Besides the picture the library may take as much again: progressive files need the whole of their
// picture at once.
bool readHeader(Reader& reader, FILE* file, uint64_t mostBytes) {
    if (setjmp(reader.report.back)) return false;
    jpeg_create_decompress(&reader.jpeg);
    reader.jpeg.mem->max_memory_to_use = static_cast<long>(mostBytes);
    reader.progress.progress_monitor = watchScans;
    reader.jpeg.progress = &reader.progress;
    jpeg_stdio_src(&reader.jpeg, file);
    jpeg_read_header(&reader.jpeg, TRUE);
    switch (reader.jpeg.jpeg_color_space) {
        case JCS_GRAYSCALE:
            reader.jpeg.out_color_space = JCS_GRAYSCALE;
            break;
        case JCS_CMYK:
        case JCS_YCCK:
            reader.jpeg.out_color_space = JCS_CMYK;
            break;
        default:
            reader.jpeg.out_color_space = JCS_RGB;
    }
    return true;
}

// Programs that write the mark of the inks' first user write inks as 255 for none.
void unpackInks(const uint8_t* inks, uint32_t width, bool inverted, uint8_t* pixels) {
    const uint8_t turn = inverted ? 0 : 255;
    for (uint32_t x = 0; x < width; ++x, inks += 4, pixels += 4) {
        const uint32_t light = inks[3] ^ turn;
        for (int i = 0; i < 3; ++i)
            pixels[i] = static_cast<uint8_t>(((inks[i] ^ turn) * light + 127) / 255);
        pixels[3] = 255;
    }
}

bool readPixels(Reader& reader, Picture& picture) {
    if (setjmp(reader.report.back)) return false;
    jpeg_decompress_struct& jpeg = reader.jpeg;
    jpeg_start_decompress(&jpeg);
    const int channels = jpeg.output_components;
    if (jpeg.output_width != picture.width || jpeg.output_height != picture.height ||
        (channels != 1 && channels != 3 && channels != 4))
        fail(reinterpret_cast<j_common_ptr>(&jpeg), "an unknown layout of pixels");
    while (jpeg.output_scanline < std::min(jpeg.output_height, reader.goodRows)) {
        uint8_t* pixels = picture.row(jpeg.output_scanline);
        uint8_t* row = reader.row.data();
        jpeg_read_scanlines(&jpeg, &row, 1);
        if (jpeg.output_scanline > reader.goodRows) break;  // has become known just now
        if (jpeg.out_color_space == JCS_CMYK)
            unpackInks(row, picture.width, jpeg.saw_Adobe_marker != 0, pixels);
        else
            unpackRow(row, picture.width, channels, channels, pixels);
        picture.rowsRead = jpeg.output_scanline;
    }
    if (reader.goodRows == UINT32_MAX) jpeg_finish_decompress(&jpeg);
    return reader.report.text[0] == 0;
}

Failure read(const SourceFile& source, Picture& picture) {
    const int orientation = orientationOfJpeg(source);
    Reader reader;
    if (!readHeader(reader, source.file, picture.mostBytes)) return std::string(reader.report.text);
    if (Failure failure =
            picture.allocate(reader.jpeg.image_width, reader.jpeg.image_height, false))
        return failure;
    picture.colour = reader.jpeg.out_color_space != JCS_GRAYSCALE;
    reader.row.resize(picture.rowSamples());
    Failure failure;
    if (!readPixels(reader, picture)) failure = reader.report.text;
    return completed(picture, failure, orientation);
}

// --- writing ---

struct Writer {
    Report report;
    jpeg_compress_struct jpeg{};
    std::vector<uint8_t> narrow, row;
    Writer() {
        prepare(report);
        jpeg.err = &report.manager;
    }
    ~Writer() { jpeg_destroy_compress(&jpeg); }
};

void setUp(jpeg_compress_struct& jpeg, const Picture& picture) {
    jpeg.image_width = picture.width;
    jpeg.image_height = picture.height;
    jpeg.input_components = picture.colour ? 3 : 1;
    jpeg.in_color_space = picture.colour ? JCS_RGB : JCS_GRAYSCALE;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, quality, TRUE);
    // Colour as finely as light: red lines on black stay red.
    for (int i = 0; i < jpeg.num_components; ++i)
        jpeg.comp_info[i].h_samp_factor = jpeg.comp_info[i].v_samp_factor = 1;
}

bool writeImage(Writer& writer, const Picture& picture, FILE* file) {
    if (setjmp(writer.report.back)) return false;
    jpeg_create_compress(&writer.jpeg);
    jpeg_stdio_dest(&writer.jpeg, file);
    setUp(writer.jpeg, picture);
    jpeg_start_compress(&writer.jpeg, TRUE);
    for (uint32_t y = 0; y < picture.height; ++y) {
        uint8_t* row = writer.row.data();
        packRow(picture.byteRow(y, writer.narrow), picture.width, picture.colour ? 3 : 1, row);
        jpeg_write_scanlines(&writer.jpeg, &row, 1);
    }
    jpeg_finish_compress(&writer.jpeg);
    return true;
}

Failure write(const Picture& picture, const TargetFile& target) {
    if (picture.width > JPEG_MAX_DIMENSION || picture.height > JPEG_MAX_DIMENSION)
        return "a JPEG file has at most " + std::to_string(JPEG_MAX_DIMENSION) + " pixels each way";
    Writer writer;
    writer.row.resize(picture.rowSamples());
    writer.narrow.reserve(picture.rowSamples());  // nothing is to throw past the jumps
    if (!writeImage(writer, picture, target.file)) return std::string(writer.report.text);
    return {};
}

bool isJpeg(std::span<const uint8_t> start) { return startsWith(start, "\xFF\xD8\xFF"); }

}  // namespace

const Codec jpegCodec = {"jpeg", isJpeg, read, write};

}  // namespace vistel
