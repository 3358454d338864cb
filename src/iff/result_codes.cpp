#include "iff/result_codes.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace vistel {

namespace {

constexpr ResultText texts[] = {
    {iffOk, "no error"},
    {iffEndOfGroup, "end of group or file"},
    {iffParsingComplete, "parsing complete"},
    {iffIoError, "IO error"},
    {iffNotIff, "not an IFF file"},
    {iffAborted, "IO aborted"},
    {iffClientError, "client error"},
    {iffBadBlock, "bad block"},
    {iffBlockTooShort, "block too short"},
    {iffBadFile, "bad IFF file"},
    {iffBrokenPipe, "broken pipe"},
    {iffIncomplete, "file incomplete"},
    {iffPartialIo, "partial IO"},
    {iffNotImplemented, "function not yet implemented"},
    {iffBlockIgnored, "block ignored"},
    {iffNotAFile, "not a file"},
    {iffBadRootBlock, "bad root block"},
    {iffPastBoundary, "IO past block boundary"},
    {iffUnexpectedBlock, "unexpected block"},
    {iffNoEndMarker, "no end marker"},
    {iffBadSize, "bad size"},
    {iffOpeningContext, "opening context not valid"},
    {iffClosingContext, "closing context not valid"},
    {iffBadEndMarker, "bad end marker"},
    {iffBadBlockEnd, "bad block end"},
    {iffInvalidOnFifo, "invalid function on a fifo"},
    {iffBadPointer, "bad pointer location"},
    {iffAlignment, "alignment error"},
    {iffCompression, "compression error"},
    {iffNoParent, "no parent"},
    {iffReadOnly, "file is read only"},
    {iffWriteOnly, "file is write only"},
    {iffInUse, "file in use"},
    {iffListNotAllowed, "list or concatenation not allowed"},
    {iffNoMemory, "no memory"},
    {iffUserError, "user error"},
    {iffInternalError, "internal error"},
    {iffDebugMarker, "debug marker"},
    {iffNoImageHeader, "no image header"},
    {iffBadImageHeader, "bad image header"},
    {iffBadImageSize, "bad image size"},
    {iffPageIoInScanlineMode, "page IO in scanline mode"},
    {iffLineIoInPageMode, "line IO in page mode"},
    {iffColourIoOnBlack, "color IO on a black image"},
    {iffNoZPlane, "image has no Z plane"},
    {iffPartialImageIo, "partial image IO"},
    {iffIoAfterImageEnd, "IO after image end"},
    {iffNoMask, "image has no mask"},
    {iffBadTiling, "bad image tiling"},
    {iffTooLargeForMap, "image too large to be used as a map"},
    {iffUnorderedMap, "unordered image can not be used as a map"},
    {iffNo16BitChannel, "image has no 16 bits channel"},
};

constexpr bool codesDescend() {
    for (size_t i = 1; i < std::size(texts); ++i) {
        if (texts[i].code >= texts[i - 1].code) return false;
    }
    return texts[0].code == 0;
}
static_assert(codesDescend());

const char* findText(int code) {
    for (const ResultText& row : texts) {
        if (row.code == code) return row.text;
    }
    return "unknown error code";
}

}  // namespace

std::span<const ResultText> resultTexts() { return texts; }

std::string errorText(int code) {
    const int systemError = errno;
    if (code > 0) return "invalid error code";
    const char* text = code == iffIoError ? std::strerror(systemError) : findText(code);
    return "(" + std::to_string(-int64_t{code}) + ") " + text;
}

void reportError(int code) { std::fprintf(stderr, "%s\n", errorText(code).c_str()); }

}  // namespace vistel
