// Result codes of the container reader and the image layer: 0 is success, every failure negative.
#pragma once

#include <span>
#include <string>

namespace vistel {

enum IffResult : int {
    iffOk = 0,
    iffEndOfGroup = -1,
    iffParsingComplete = -2,
    iffIoError = -3,
    iffNotIff = -4,
    iffAborted = -5,
    iffClientError = -6,
    iffBadBlock = -7,
    iffBlockTooShort = -8,
    iffBadFile = -9,
    iffBrokenPipe = -10,
    iffIncomplete = -11,
    iffPartialIo = -12,
    iffNotImplemented = -13,
    iffBlockIgnored = -14,
    iffNotAFile = -15,
    iffBadRootBlock = -16,
    iffPastBoundary = -17,
    iffUnexpectedBlock = -18,
    iffNoEndMarker = -19,
    iffBadSize = -20,
    iffOpeningContext = -21,
    iffClosingContext = -22,
    iffBadEndMarker = -23,
    iffBadBlockEnd = -24,
    iffInvalidOnFifo = -25,
    iffBadPointer = -26,
    iffAlignment = -27,
    iffCompression = -28,
    iffNoParent = -29,
    iffReadOnly = -30,
    iffWriteOnly = -31,
    iffInUse = -32,
    iffListNotAllowed = -33,
    iffNoMemory = -80,
    iffUserError = -97,
    iffInternalError = -98,
    iffDebugMarker = -99,
    iffNoImageHeader = -100,
    iffBadImageHeader = -101,
    iffBadImageSize = -102,
    iffPageIoInScanlineMode = -103,
    iffLineIoInPageMode = -104,
    iffColourIoOnBlack = -105,
    iffNoZPlane = -106,
    iffPartialImageIo = -107,
    iffIoAfterImageEnd = -108,
    iffNoMask = -109,
    iffBadTiling = -110,
    iffTooLargeForMap = -111,
    iffUnorderedMap = -112,
    iffNo16BitChannel = -113,
};

struct ResultText {
    int code;
    const char* text;
};

// The complete table, codes descending from 0; tests tell listed codes from others by it.
std::span<const ResultText> resultTexts();

// "(28) compression error"; "invalid error code" for a positive code; code -3 carries the system's
// text for errno; an unlisted code gives "(50) unknown error code".
std::string errorText(int code);

// The same text and a line end, to standard error.
void reportError(int code);

}  // namespace vistel
