// The reader's way through the bytes: reading with patience, skipping, finding the end.
#include <algorithm>

#include "host/byte_order.h"
#include "iff/iff_reader.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace vistel {

namespace {

// A gap up to this size is cheaper to read than to seek over.
constexpr size_t skipPiece = 512;
// The owner is asked whether to go on about once for so many bytes.
constexpr size_t askedPiece = size_t{1} << 20;
// A retry count R is spent again at most this many times divided by R.
constexpr int64_t retryPasses = 1000;

// Without this the end of a file stays its end, whatever is appended. Clearing the stream's mark is
// not enough everywhere: some run-times keep another one below it, which only a seek clears.
void forgetEnd(FILE* stream) {
    if (!platform::seekStream(stream, 0, SEEK_CUR)) std::clearerr(stream);
}

}  // namespace

// --- bytes ---

// One millisecond of patience, or the code to give up with.
int IffReader::waitForMore(int64_t& waits) {
    forgetEnd(stream_);
    const int64_t retries = retryCount;
    if (retries == 0) return iffIncomplete;
    if (retries > 0 && waits >= retries * (1 + retryPasses / retries)) return iffIncomplete;
    ++waits;
    platform::sleepMilliseconds(1);
    return platform::mayGoOn(goOn) ? iffOk : iffAborted;
}

bool IffReader::mayGoOn() {
    if (position_ - askedAt_ < askedPiece) return true;
    askedAt_ = position_;
    return platform::mayGoOn(goOn);
}

// Waits until a read has not to wait for whoever writes the stream: how much it may ask for.
int IffReader::awaitBytes(size_t& ready) {
    ready = askedPiece;
    if (!mayHaveToWait_) return iffOk;
    for (unsigned milliseconds = 0;; milliseconds = 1) {
        ready = platform::awaitBytes(stream_, milliseconds);
        if (ready > 0) return iffOk;
        if (!platform::mayGoOn(goOn)) return iffAborted;
    }
}

int IffReader::readRaw(void* buffer, size_t n) {
    auto* bytes = static_cast<uint8_t*>(buffer);
    int64_t waits = 0;
    for (size_t got = 0; got < n;) {
        size_t ready = 0;
        if (const int code = awaitBytes(ready); code != iffOk) return code;
        const size_t asked = std::min({n - got, ready, askedPiece});
        const size_t part = std::fread(bytes + got, 1, asked, stream_);
        got += part;
        position_ += part;
        if (part > 0) {
            waits = 0;
            if (!mayGoOn()) return iffAborted;
            continue;
        }
        // What ends the wait for a command may have ended the command too.
        if (!seekable()) return platform::mayGoOn(goOn) ? iffBrokenPipe : iffAborted;
        const int code = waitForMore(waits);
        if (code == iffIncomplete && got > 0) return iffPartialIo;
        if (code != iffOk) return code;
    }
    return iffOk;
}

int IffReader::readBytes(void* buffer, size_t n) {
    if (sizeKnown() && n > chunkBytesLeft()) return iffBlockTooShort;
    if (n > chunkBytesLeft()) return iffPastBoundary;
    const uint64_t start = position_;
    const int code = readRaw(buffer, n);
    consumed_ += position_ - start;
    return code;
}

uint64_t IffReader::chunkBytesLeft() const {
    const uint64_t inGroup = groupEnd_ > position_ ? groupEnd_ - position_ : 0;
    const uint64_t inChunk = chunkSize_ > consumed_ ? chunkSize_ - consumed_ : 0;
    return std::min(inGroup, inChunk);
}

uint64_t IffReader::streamBytesLeft() const {
    if (!seekable()) return UINT64_MAX;
    const uint64_t size = platform::streamStatus(stream_).size;
    const uint64_t here = static_cast<uint64_t>(streamStart_) + position_;
    return size > here ? size - here : 0;
}

// --- skipping ---

int IffReader::skipRaw(uint64_t n) {
    if (seekable() && n > skipPiece) {
        if (!platform::seekStream(stream_, static_cast<int64_t>(n), SEEK_CUR)) return iffIoError;
        position_ += n;
        return iffOk;
    }
    uint8_t scratch[skipPiece];
    while (n > 0) {
        const size_t piece = static_cast<size_t>(std::min<uint64_t>(n, skipPiece));
        if (const int code = readRaw(scratch, piece); code != iffOk) return code;
        n -= piece;
    }
    return iffOk;
}

// Behind a chunk without size: everything up to and with the end marker, word by word.
int IffReader::skipToMarker() {
    if (!parent_) return iffNoParent;
    for (bool found = false;;) {
        uint8_t word[4];
        if (groupEnd_ < position_ + sizeof word) return iffNoEndMarker;
        const int code = readRaw(word, sizeof word);
        if (code == iffAborted) return code;
        if (code != iffOk) return iffNoEndMarker;
        const uint32_t value = readBig32(word);
        if (found) return value == iffSizeUnknown ? iffOk : iffBadEndMarker;
        found = static_cast<int32_t>(value) == iffChunkEndMarker;
    }
}

// Skips to `offset` in the current body, or behind it.
int IffReader::skipTo(uint64_t offset) {
    if (offset <= consumed_) return iffOk;
    const uint64_t start = position_;
    const int code = skipRaw(offset - consumed_);
    consumed_ += position_ - start;
    return code;
}

// No group holds what stands at the root: there a group is aligned as its own content is, and the
// last one may lack its pad bytes.
int IffReader::skipRootPad(uint64_t size) {
    bool ended = false;
    if (const int code = skipTo(size); code != iffOk) return code;
    if (const int code = lookForEnd(ended); code != iffOk) return code;
    return ended ? int{iffOk} : skipTo(iffRoundUp(size, groupAlignMask_));
}

int IffReader::skipChunk() {
    if (!sizeKnown() && chunkSize_ != iffSizeStreamed) {
        return seekable() ? iffInUse : iffInvalidOnFifo;
    }
    const bool toMarker = !sizeKnown();
    const uint64_t size = toMarker ? consumed_ : chunkSize_;
    int code = parent_ ? skipTo(iffRoundUp(size, alignMask_)) : skipRootPad(size);
    if (code == iffOk && toMarker) code = skipToMarker();
    if (code != iffOk) return code;
    chunkSize_ = 0;
    consumed_ = 0;
    return iffOk;
}

// Whether the file ends here, behind a complete group at the root. Nobody waits for another group
// that is written to a file; in a pipe it may still come.
int IffReader::lookForEnd(bool& ended) {
    ended = false;
    const bool behindGroup = chunkId_ > 0 || chunkId_ == iffEndOfGroup;
    if (parent_ || !behindGroup) return iffOk;
    size_t ready = 0;
    if (const int code = awaitBytes(ready); code != iffOk) return code;
    const int byte = std::fgetc(stream_);
    if (byte != EOF) {
        std::ungetc(byte, stream_);
        return iffOk;
    }
    // A failure is no end: the next read meets it again and reports it.
    if (!seekable()) {
        ended = std::ferror(stream_) == 0;
        return iffOk;
    }
    forgetEnd(stream_);
    // Nor is a place beyond the end, which a skip has reached in a file that was cut.
    ended = static_cast<uint64_t>(streamStart_) + position_ == platform::streamStatus(stream_).size;
    return iffOk;
}

}  // namespace vistel
