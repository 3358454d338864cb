#include "tiff_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <string>

#include "platform/files.h"

namespace vistel {

namespace {

TiffStream& streamOf(thandle_t handle) { return *static_cast<TiffStream*>(handle); }

void noteWriteError(TiffStream& stream) {
    if (stream.writeError == 0) stream.writeError = errno;
}

tmsize_t readBytes(thandle_t handle, void* bytes, tmsize_t wanted) {
    TiffStream& stream = streamOf(handle);
    const auto size = static_cast<size_t>(wanted);
    const size_t there = std::fread(bytes, 1, size, stream.file);
    const size_t missing = size - there;
    if (missing == 0 || !stream.zerosBehind || stream.zeros + missing > stream.size * 100)
        return static_cast<tmsize_t>(there);
    std::memset(static_cast<char*>(bytes) + there, 0, missing);
    stream.zeros += missing;
    stream.cut = true;
    return wanted;
}

tmsize_t writeBytes(thandle_t handle, void* bytes, tmsize_t size) {
    TiffStream& stream = streamOf(handle);
    const size_t n = std::fwrite(bytes, 1, static_cast<size_t>(size), stream.file);
    if (n != static_cast<size_t>(size)) noteWriteError(stream);
    return static_cast<tmsize_t>(n);
}

toff_t seek(thandle_t handle, toff_t offset, int origin) {
    TiffStream& stream = streamOf(handle);
    constexpr auto failed = static_cast<toff_t>(-1);
    if (origin == SEEK_SET && offset > INT64_MAX) return failed;
    if (!platform::seekStream(stream.file, static_cast<int64_t>(offset), origin)) {
        noteWriteError(stream);  // of what was held back
        return failed;
    }
    return static_cast<toff_t>(platform::streamPosition(stream.file));
}

toff_t sizeOf(thandle_t handle) {
    FILE* file = streamOf(handle).file;
    std::fflush(file);
    return platform::streamStatus(file).size;
}

int closeNothing(thandle_t) { return 0; }

// The first text: what follows only says that it could not go on.
int onError(TIFF*, void* user, const char*, const char* format, va_list arguments) {
    char* text = static_cast<TiffStream*>(user)->report;
    if (*text == 0) std::vsnprintf(text, sizeof TiffStream::report, format, arguments);
    return 1;
}

int onWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct Packing {
    uint16_t code;
    const char* name;
};
constexpr Packing packings[] = {
    {COMPRESSION_OJPEG, "JPEG of the old kind"},
    {COMPRESSION_JPEG, "JPEG"},
    {COMPRESSION_JBIG, "JBIG"},
    {COMPRESSION_JP2000, "JPEG 2000"},
    {COMPRESSION_LERC, "LERC"},
    {COMPRESSION_LZMA, "LZMA"},
    {COMPRESSION_ZSTD, "ZSTD"},
    {COMPRESSION_WEBP, "WebP"},
    {COMPRESSION_JXL, "JPEG XL"},
};

}  // namespace

TiffPtr openTiff(TiffStream& stream, const char* mode) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(
        TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
    if (!options) return {};
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(stream.mostBlock));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &stream);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, nullptr);
    return TiffPtr(TIFFClientOpenExt("", mode, &stream, readBytes, writeBytes, seek, closeNothing,
                                     sizeOf, nullptr, nullptr, options.get()));
}

Failure tiffFailure(const TiffStream& stream) {
    if (stream.cut) return "the file ends early";
    if (stream.report[0] == 0) return "the file is damaged";
    return "the file is damaged: " + std::string(stream.report);
}

Failure unknownTiffPacking(TIFF* tiff) {
    uint16_t code = COMPRESSION_NONE;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &code);
    if (TIFFIsCODECConfigured(code)) return {};
    const auto* row = std::find_if(std::begin(packings), std::end(packings),
                                   [&](const Packing& packing) { return packing.code == code; });
    const std::string name = row == std::end(packings) ? std::to_string(code) : row->name;
    return "TIFF files with compression " + name + " are not supported";
}

}  // namespace vistel
