#include "iff/iff_reader.h"

#include <algorithm>
#include <utility>

#include "host/byte_order.h"
#include "platform/files.h"

namespace vistel {

namespace {

int skipHandler(IffReader& group) { return group.skipGroup(); }

IffHandler handlerFor(const IffHandlers& handlers, uint32_t chunkFlags) {
    if (chunkFlags & iffFlagForm) return handlers.form;
    if (chunkFlags & iffFlagConcatenation) return handlers.concatenation;
    if (chunkFlags & iffFlagList) return handlers.list;
    return handlers.property;
}

}  // namespace

int IffReader::open(FILE* stream, bool forceStream) {
    const platform::StreamStatus status = platform::streamStatus(stream);
    if (status.kind == platform::StreamKind::other) return iffNotAFile;
    const bool seekable = status.kind == platform::StreamKind::regular && !forceStream;

    IffReader fresh;
    fresh.handlers = handlers;
    fresh.user = user;
    fresh.retryCount = retryCount;
    fresh.goOn = goOn;
    fresh.stream_ = stream;
    fresh.mayHaveToWait_ = status.kind != platform::StreamKind::regular;
    fresh.flags_ = iffFlagReading | (seekable ? 0u : uint32_t{iffFlagStream});
    if (seekable) {
        fresh.fileSize_ = static_cast<uint32_t>(std::min<uint64_t>(status.size, UINT32_MAX));
        fresh.streamStart_ = std::max<int64_t>(platform::streamPosition(stream), 0);
    }
    *this = std::move(fresh);
    return iffOk;
}

// --- chunks ---

// The next header that is no stray end marker.
int IffReader::readHeader(int32_t& id, uint32_t& size) {
    do {
        bool ended = position_ == groupEnd_;
        if (!ended)
            if (const int code = lookForEnd(ended); code != iffOk) return code;
        if (ended) return iffEndOfGroup;
        if (groupEnd_ < position_ + iffHeaderSize) return iffBlockTooShort;
        uint8_t header[iffHeaderSize];
        const uint64_t start = position_;
        const int code = readRaw(header, sizeof header);
        seenId_ = position_ - start >= 4 ? static_cast<int32_t>(readBig32(header)) : 0;
        if (code != iffOk) return code;
        id = static_cast<int32_t>(readBig32(header));
        size = readBig32(header + 4);
    } while (id == iffChunkEndMarker);
    return iffOk;
}

int IffReader::next() {
    if (const int code = skipChunk(); code != iffOk) return code;
    groupType_ = 0;
    flags_ &= ~uint32_t{iffFlagsOfChunk};

    int32_t id = 0;
    uint32_t size = 0;
    const int code = readHeader(id, size);
    chunkId_ = code == iffEndOfGroup ? iffEndOfGroup : iffBadFile;
    if (code != iffOk) return code;
    if (id == iffGroupEndId && parent_) return endUnknownGroup(size);
    chunkId_ = classify(id, size);
    if (chunkId_ < 0 || !onGroup()) return chunkId_;
    return readGroupType();
}

// The group's size is known at last; the parent, which stands at its beginning, is told.
int IffReader::endUnknownGroup(uint32_t endSize) {
    if (endSize != 0 && endSize != iffSizeUnknown) return iffBadBlockEnd;
    const uint64_t size = position_ - (parent_->position_ - parent_->consumed_);
    if (parent_->sizeKnown()) {
        if (size != parent_->chunkSize_) return iffBadBlockEnd;
    } else {
        // More than a size can say is cut to the largest one: the parent has consumed it all.
        parent_->chunkSize_ =
            static_cast<uint32_t>(std::min<uint64_t>(size, iffSizeUnknownBit - 1));
    }
    groupEnd_ = position_;
    chunkId_ = iffEndOfGroup;
    return iffEndOfGroup;
}

// Checks a header, sets what the context knows of its chunk. The identifier, or a code.
int IffReader::classify(int32_t id, uint32_t size) {
    if (id < 0) return iffBadFile;
    if (iffSizeKnown(size)) {
        if (position_ + size > groupEnd_) return iffPastBoundary;
    } else if (size & iffSizeForbiddenBits) {
        return iffBadSize;
    }
    chunkSize_ = size;

    const IffGroupRow* row = findIffGroup(id);
    groupAlignMask_ = row ? row->alignMask : 0;
    if (row && row->kind == IffGroupKind::reserved) return iffNotImplemented;
    if (row) flags_ |= row->chunkFlags;
    const bool property = (flags_ & iffFlagProperty) != 0;
    if (!parent_ && (!row || property)) return iffBadRootBlock;
    if (property && !(parent_->flags_ & iffFlagMayHoldProperties)) return iffUnexpectedBlock;
    return id;
}

int IffReader::readGroupType() {
    uint8_t type[4];
    int code = readBytes(type, sizeof type);
    if (code == iffIncomplete) code = iffPartialIo;
    if (code != iffOk) {
        chunkId_ = iffBadFile;
        return code;
    }
    groupType_ = static_cast<int32_t>(readBig32(type));
    return chunkId_;
}

// --- groups ---

int IffReader::dispatch() {
    const int result = next();
    return result > 0 && onGroup() ? callHandler() : result;
}

int IffReader::callHandler() {
    const IffHandler handler = handlerFor(handlers, flags_);
    if (!handler) return iffOk;
    const int result = handler(*this);
    if (result != iffBlockIgnored) return result;
    return chunkSize_ == iffSizeStreamed ? skipGroup() : iffOk;
}

int IffReader::enter(IffReader& child) {
    child = *this;
    child.parent_ = this;
    child.depth_ = depth_ + 1;
    child.flags_ &= ~uint32_t{iffFlagsOfChunk};
    child.chunkId_ = 0;
    child.chunkSize_ = 0;
    child.groupType_ = 0;
    child.consumed_ = 0;
    child.startPosition_ = position_;
    child.alignMask_ = groupAlignMask_;
    if (!onGroup()) return iffClientError;
    if (child.depth_ > iffMaxDepth) return iffBadFile;
    if (!sizeKnown()) return iffOk;
    child.groupEnd_ = position_ - consumed_ + chunkSize_;
    const bool odd = (child.groupEnd_ & 1) != 0;
    return odd || child.groupEnd_ > groupEnd_ ? iffPastBoundary : iffOk;
}

void IffReader::leave() {
    parent_->consumed_ += position_ - startPosition_;
    parent_->position_ = position_;
}

int IffReader::parseGroup(const IffHandlers* table) {
    IffReader child;
    int result = enter(child);
    if (result != iffOk) return result;
    if (table && (flags_ & iffFlagMayHoldProperties)) child.handlers = *table;
    do {
        result = child.dispatch();
    } while (result == iffOk);
    child.leave();
    if (result > 0) return iffBadFile;
    return result == iffEndOfGroup ? iffOk : result;
}

int IffReader::skipGroup() {
    IffReader child;
    int result = enter(child);
    if (result != iffOk) return result;
    child.handlers = {
        skipHandler, skipHandler, skipHandler, skipHandler, {skipHandler, skipHandler}};
    do {
        result = child.dispatch();
    } while (result >= 0);
    child.leave();
    return result == iffEndOfGroup ? iffOk : result;
}

// --- files ---

int parseFile(IffReader& root, FILE* stream) {
    if (const int code = root.open(stream); code != iffOk) return code;
    const int id = root.next();
    const bool first = root.position() <= iffHeaderSize;
    if ((id == iffBadFile && first) || id == iffBadRootBlock) return iffNotIff;
    if (id < 0) return id;
    const int result = root.callHandler();
    return result > 0 ? iffNotIff : result;
}

// Whether the code of a step behind a complete group means the end, or bytes that are none of ours.
static bool endsTheFile(const IffReader& root, int code) {
    if (code == iffEndOfGroup || code == iffBadFile || code == iffBadRootBlock) return true;
    if (code == iffIoError || code == iffIncomplete || code == iffAborted) return false;
    if (std::ferror(root.stream())) return false;
    return !findIffGroup(root.seenId());
}

int parseWholeFile(IffReader& root, FILE* stream) {
    int result = parseFile(root, stream);
    while (result == iffOk) {
        if (const int code = root.skipChunk(); code != iffOk) return code;
        const int id = root.next();
        if (id < 0) return endsTheFile(root, id) ? int{iffOk} : id;
        result = root.callHandler();
        if (result > 0) return iffBadFile;
    }
    return result;
}

}  // namespace vistel
