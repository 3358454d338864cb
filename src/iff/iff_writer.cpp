#include "iff/iff_writer.h"

#include <algorithm>
#include <cerrno>

#include "host/byte_order.h"
#include "host/image_plugins.h"
#include "iff/with_memory.h"
#include "platform/files.h"
#include "platform/process.h"

namespace vistel {

namespace {

constexpr uint8_t zeros[8] = {};

}  // namespace

std::string converterWriteCommand(const std::string& converter, const std::string& name,
                                  const std::string& format) {
    return platform::quotedCommand(converter, format.empty() ? "" : "-t " + format, name, "");
}

IffWriter::~IffWriter() { close(); }

// --- opening ---

int IffWriter::openOutput(const std::string& name, const std::optional<std::string>& format) {
    name_ = name;
    if (name.empty() || name == "stdout") {
        stream_ = platform::duplicateStandardStream(1, "r+");
        return stream_ ? iffOk : iffIoError;
    }
    const std::optional<std::string> converter =
        format ? platform::findProgram(imageConverter) : std::nullopt;
    if (converter) {
        stream_ = platform::openPipe(converterWriteCommand(*converter, name, *format), "w");
        isPipe_ = stream_ != nullptr;
    } else {
        stream_ = platform::openFile(name, "w");
    }
    return stream_ ? iffOk : iffIoError;
}

int IffWriter::open(const std::string& name, const std::optional<std::string>& format) {
    close();
    const int code = withMemory([&] { return openOutput(name, format); });
    if (code == iffOk) return startRoot(false);
    name_.clear();
    return code;
}

int IffWriter::openStream(FILE* stream, bool forceStream) {
    close();
    if (!stream) return iffIoError;
    stream_ = stream;
    return startRoot(forceStream);
}

// A file that only grows at its end takes no patches: it is written as a pipe is.
int IffWriter::startRoot(bool forceStream) {
    const platform::StreamStatus status = platform::streamStatus(stream_);
    const bool regular = status.kind == platform::StreamKind::regular;
    const bool seekable = regular && !status.appends && !forceStream;
    flags_ = iffFlagWriting | (seekable ? 0u : uint32_t{iffFlagStream});
    int code = status.kind == platform::StreamKind::other ? int{iffNotAFile} : int{iffOk};
    if (code == iffOk) code = beginGroup(iffId("FOR4"), iffId("CIMG"));
    if (code == iffOk) return iffOk;

    const int systemError = errno;
    abandon();
    errno = systemError;
    return code;
}

// --- bytes ---

int IffWriter::writeRaw(const void* bytes, size_t n) {
    const size_t part = std::fwrite(bytes, 1, n, stream_);
    position_ += part;
    if (part == n) return iffOk;
    if (ioResult_ == iffOk) ioResult_ = iffIoError;
    return iffIoError;
}

int IffWriter::writeZeros(uint64_t n) {
    while (n > 0) {
        const size_t piece = static_cast<size_t>(std::min<uint64_t>(n, sizeof zeros));
        if (const int code = writeRaw(zeros, piece); code != iffOk) return code;
        n -= piece;
    }
    return iffOk;
}

int IffWriter::writeHeader(int32_t id, uint32_t size) {
    uint8_t header[iffHeaderSize];
    writeBig32(header, static_cast<uint32_t>(id));
    writeBig32(header + 4, size);
    return writeRaw(header, sizeof header);
}

bool IffWriter::roomFor(uint64_t n) const {
    return position_ + n <= (chunks_.empty() ? iffRootEnd : chunks_.back().bodyEnd);
}

int IffWriter::write(const void* bytes, size_t n) {
    if (!stream_ || chunks_.empty() || chunks_.back().group) return iffClientError;
    if (!roomFor(n)) return iffPastBoundary;
    return writeRaw(bytes, n);
}

// --- chunks ---

int IffWriter::beginAny(int32_t id, const IffGroupRow* group, uint32_t size) {
    if (!iffSizeKnown(size)) size = seekable() ? iffSizePatched : iffSizeStreamed;
    if (!roomFor(iffHeaderSize + (iffSizeKnown(size) ? size : 0))) return iffPastBoundary;
    // The header may only be written when its end can be remembered.
    const int reserved = withMemory([this] {
        if (chunks_.size() == chunks_.capacity()) chunks_.reserve(2 * chunks_.size() + 4);
        return int{iffOk};
    });
    if (reserved != iffOk) return reserved;
    if (const int code = writeHeader(id, size); code != iffOk) return code;

    OpenChunk chunk;
    chunk.id = id;
    chunk.group = group;
    chunk.size = size;
    chunk.bodyStart = position_;
    chunk.bodyEnd = chunks_.empty() ? iffRootEnd : chunks_.back().bodyEnd;
    if (iffSizeKnown(size)) chunk.bodyEnd = position_ + size;
    // At the root, where no group is around it, a group is aligned as its own content is.
    chunk.alignMask = chunks_.empty() ? group->alignMask : chunks_.back().group->alignMask;
    chunks_.push_back(chunk);
    return iffOk;
}

int IffWriter::beginChunk(int32_t id, uint32_t size) {
    if (!stream_ || findIffGroup(id)) return iffClientError;
    if (chunks_.empty()) return iffBadRootBlock;
    if (!chunks_.back().group) return iffClientError;
    if (!roomFor(iffHeaderSize)) return iffPastBoundary;
    return beginAny(id, nullptr, size);
}

int IffWriter::beginGroup(int32_t id, int32_t type, uint32_t size) {
    const IffGroupRow* group = findIffGroup(id);
    if (!stream_ || !group) return iffClientError;
    if (group->kind == IffGroupKind::reserved) return iffNotImplemented;
    if (!chunks_.empty() && !chunks_.back().group) return iffClientError;
    const bool inList = !chunks_.empty() && chunks_.back().group->kind == IffGroupKind::list;
    if (group->kind == IffGroupKind::property && !inList) return iffUnexpectedBlock;

    uint8_t typeBytes[4];
    const bool noRoomForType = iffSizeKnown(size) && size < sizeof typeBytes;
    if (noRoomForType || !roomFor(iffHeaderSize + sizeof typeBytes)) return iffPastBoundary;
    if (const int code = beginAny(id, group, size); code != iffOk) return code;
    chunks_.back().type = type;
    writeBig32(typeBytes, static_cast<uint32_t>(type));
    return writeRaw(typeBytes, sizeof typeBytes);
}

int IffWriter::writeChunk(int32_t id, const void* bytes, uint32_t size) {
    if (const int code = beginChunk(id, size); code != iffOk) return code;
    const int code = write(bytes, size);
    const int endCode = endChunk();
    return code != iffOk ? code : endCode;
}

// --- ends ---

int IffWriter::endChunk() {
    if (chunks_.empty() || chunks_.back().group) return iffClientError;
    return endInnermost();
}

int IffWriter::endGroup() {
    if (chunks_.empty() || !chunks_.back().group) return iffClientError;
    return endInnermost();
}

int IffWriter::endInnermost() {
    const OpenChunk chunk = chunks_.back();
    const bool known = iffSizeKnown(chunk.size);
    const size_t endSize = chunk.group && !known ? iffHeaderSize : 0;
    const uint64_t written = position_ + endSize - chunk.bodyStart;
    const uint64_t padded = iffRoundUp(known ? chunk.size : written, chunk.alignMask);
    // The pad bytes belong to the group around it. A chunk that cannot be ended stays open.
    const uint64_t outerEnd = chunks_.size() < 2 ? iffRootEnd : chunks_[chunks_.size() - 2].bodyEnd;
    if (!roomFor(endSize) || chunk.bodyStart + padded > outerEnd) return iffPastBoundary;
    if (endSize > 0)
        if (const int code = writeHeader(iffGroupEndId, iffSizeUnknown); code != iffOk) return code;
    chunks_.pop_back();
    int code = writeZeros(padded - written);
    if (code == iffOk && chunk.size == iffSizePatched) code = patchSize(written, padded - written);
    if (code == iffOk && chunk.size == iffSizeStreamed && !chunk.group) {
        code = writeHeader(iffChunkEndMarker, iffSizeUnknown);
    }
    return code;
}

// Back over pad, body and size, the real size, and forward again.
int IffWriter::patchSize(uint64_t written, uint64_t pad) {
    if (written >= iffSizeUnknownBit) {
        if (ioResult_ == iffOk) ioResult_ = iffBadSize;
        return iffBadSize;
    }
    uint8_t size[4];
    writeBig32(size, static_cast<uint32_t>(written));
    const int64_t body = static_cast<int64_t>(written + pad);
    const int64_t back = body + static_cast<int64_t>(sizeof size);
    if (platform::seekStream(stream_, -back, SEEK_CUR) &&
        std::fwrite(size, 1, sizeof size, stream_) == sizeof size &&
        platform::seekStream(stream_, body, SEEK_CUR)) {
        return iffOk;
    }
    if (ioResult_ == iffOk) ioResult_ = iffIoError;
    return iffIoError;
}

// --- closing ---

int IffWriter::closeStream() {
    const bool flushed = std::fflush(stream_) == 0;
    if (isPipe_) {
        const int status =
            platform::closePipe(stream_, [this] { return platform::mayGoOn(goOn_); });
        return status == 0 && flushed ? iffOk : iffBrokenPipe;
    }
    if (platform::isStandardStream(stream_)) {
        return flushed ? iffOk : iffIoError;
    }
    return std::fclose(stream_) == 0 && flushed ? iffOk : iffIoError;
}

int IffWriter::abandon() {
    chunks_.clear();
    return close();
}

int IffWriter::close() {
    if (!stream_) return iffOk;
    while (!chunks_.empty() && ioResult_ == iffOk) {
        if (const int code = endInnermost(); code != iffOk && ioResult_ == iffOk) ioResult_ = code;
    }
    chunks_.clear();
    const int closed = closeStream();
    const int result = ioResult_ != iffOk ? ioResult_ : closed;
    stream_ = nullptr;
    isPipe_ = false;
    flags_ = 0;
    name_.clear();
    position_ = 0;
    ioResult_ = iffOk;
    return result;
}

}  // namespace vistel
