// IffWriter: writes a container to a file, a pipe or standard output.
//
// The writer keeps the chunks that are open, innermost last; bytes go to the innermost one. A size
// that is not known in advance is patched in place when the chunk ends, or, where seeking is not
// possible, an end marker is written instead.
//
//     IffWriter writer;
//     if (int code = writer.open(name, std::nullopt); code != iffOk) return code;  // errno is set
//     writer.writeChunk(iffId("NAME"), text.data(), text.size());
//     writer.beginGroup(iffId("FOR4"), iffId("TBMP"));
//     ... writer.beginChunk(iffId("RGBA")); writer.write(tile, n); writer.endChunk(); ...
//     writer.endGroup();
//     return writer.close();
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "iff/iff_context.h"
#include "iff/result_codes.h"
#include "platform/go_on.h"

namespace vistel {

// The command that makes the converter write the file `name` from what it is sent. Without a format
// it goes by the name.
std::string converterWriteCommand(const std::string& converter, const std::string& name,
                                  const std::string& format);

class IffWriter {
 public:
    IffWriter() = default;
    IffWriter(const IffWriter&) = delete;
    IffWriter& operator=(const IffWriter&) = delete;
    ~IffWriter();  // closes

    // Opens the output and starts the root group "FOR4" of type "CIMG". The empty name and "stdout"
    // mean a duplicate of standard output. With a format (an image type's key, possibly empty) the
    // stream goes to the converter program, which writes the file; without one, or when there is no
    // converter, the file itself is written. iffIoError (errno set) when it cannot be opened,
    // iffNotAFile when it is no file, FIFO or character device. iffNoMemory may come of every
    // operation that opens something.
    [[nodiscard]] int open(const std::string& name, const std::optional<std::string>& format);
    // The same on a stream that is already open; it is closed by close unless it is a standard
    // stream, also when this call fails. forceStream treats a regular file as one that cannot seek;
    // so is one that was opened for appending. iffIoError for null.
    [[nodiscard]] int openStream(FILE* stream, bool forceStream = false);

    // Opens a chunk in the innermost group. Any size with the top bit set means "not known yet".
    // iffBadRootBlock outside a group, iffPastBoundary without room for the header, iffClientError
    // inside a plain chunk.
    [[nodiscard]] int beginChunk(int32_t id, uint32_t size = iffSizeUnknown);
    // Opens a group (a row of the group table) and writes its type. iffUnexpectedBlock for a
    // property group outside a list; a known size includes the 4 bytes of the type.
    [[nodiscard]] int beginGroup(int32_t id, int32_t type, uint32_t size = iffSizeUnknown);
    // Bytes of the open plain chunk. iffPastBoundary, and nothing is written, when they pass its
    // declared size or its group's end.
    [[nodiscard]] int write(const void* bytes, size_t n);
    // Pads the innermost chunk and settles its size. iffClientError when it is not open.
    [[nodiscard]] int endChunk();
    [[nodiscard]] int endGroup();
    // Header, body and end of a plain chunk of known size.
    [[nodiscard]] int writeChunk(int32_t id, const void* bytes, uint32_t size);

    // Ends all that is open, closes the stream. The first failure of the writer's life;
    // iffBrokenPipe when the converter ended with an error. Closing twice does nothing.
    int close();
    // Asked while close waits for the converter to end; false ends it.
    void setGoOn(platform::GoOn goOn) { goOn_ = std::move(goOn); }
    // Closes the stream as it is, with nothing ended.
    int abandon();

    bool isOpen() const { return stream_ != nullptr; }
    // The converter's standard input; null when the stream goes into no converter.
    FILE* converterPipe() const { return isPipe_ ? stream_ : nullptr; }
    bool seekable() const { return (flags_ & iffFlagStream) == 0; }
    uint32_t flags() const { return flags_; }
    uint32_t depth() const { return static_cast<uint32_t>(chunks_.size()); }  // 1 in the root group
    // The innermost open chunk or group; 0 when there is none. The id has no caller in the viewer.
    int32_t openId() const { return chunks_.empty() ? 0 : chunks_.back().id; }
    int32_t openType() const { return chunks_.empty() ? 0 : chunks_.back().type; }
    const std::string& name() const { return name_; }

    // The format version, written to image headers.
    uint16_t versionFirst = 1, versionSecond = 1;

 private:
    struct OpenChunk {
        int32_t id = 0;
        int32_t type = 0;                    // of a group
        const IffGroupRow* group = nullptr;  // null for a plain chunk
        uint32_t size = 0;                   // as written in the header
        uint64_t bodyStart = 0;              // position behind the header
        uint64_t bodyEnd = 0;                // position its bytes may not pass
        uint32_t alignMask = 0;              // of the group around it
    };

    int openOutput(const std::string& name, const std::optional<std::string>& format);
    int startRoot(bool forceStream);
    int beginAny(int32_t id, const IffGroupRow* group, uint32_t size);
    int endInnermost();
    int patchSize(uint64_t written, uint64_t pad);
    int writeZeros(uint64_t n);
    int writeRaw(const void* bytes, size_t n);
    int writeHeader(int32_t id, uint32_t size);
    int closeStream();
    bool roomFor(uint64_t n) const;  // in the innermost open chunk, or at the root

    FILE* stream_ = nullptr;
    bool isPipe_ = false;
    platform::GoOn goOn_;
    uint32_t flags_ = 0;
    std::string name_;
    uint64_t position_ = 0;  // bytes written since open
    std::vector<OpenChunk> chunks_;
    int ioResult_ = iffOk;  // first failure of the stream
};

}  // namespace vistel
