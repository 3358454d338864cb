// IffReader: a reading context on one level of a container stream.
//
// The root context sits on the stream; `enter` makes a child context for the group the parent is
// positioned on, `leave` hands the child's position back. `dispatch` moves to the next chunk and
// calls the handler of a group; a plain chunk's identifier is returned to the caller, who reads its
// body or lets the next call skip it.
//
//     int walk(IffReader& group) {             // typically a handler
//         IffReader chunks;
//         int result = group.enter(chunks);
//         if (result != iffOk) return result;
//         do {
//             result = chunks.dispatch();
//             if (result > 0) result = readPlainChunk(chunks);
//         } while (result == iffOk);
//         chunks.leave();
//         return result == iffEndOfGroup ? iffOk : result;
//     }
//
// Every size is taken as hostile: no read passes a chunk or a group, every step moves forward,
// nesting is bounded. Not thread-safe; nothing is allocated but what a copy of goOn takes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "iff/iff_context.h"
#include "iff/result_codes.h"
#include "platform/go_on.h"

namespace vistel {

class IffReader;

// Called with the enclosing context, positioned on the group: its identifier, size and type are the
// current chunk's, the type has been read, the group has not been entered. Returns a result code;
// iffBlockIgnored skips the group. iffEndOfGroup would end the enclosing walk too.
using IffHandler = int (*)(IffReader& group);

// By kind; the 2-, 4- and 8-byte variants alike. Without a handler a group is skipped.
struct IffHandlers {
    IffHandler form = nullptr;
    IffHandler concatenation = nullptr;
    IffHandler list = nullptr;
    IffHandler property = nullptr;
    IffHandler further[2] = {};  // copied with the table, never called
};

class IffReader {
 public:
    // --- set by the owner of the root; children inherit them ---
    IffHandlers handlers;
    void* user = nullptr;  // the handlers' own
    // What to do at the end of a file that is still being written: 0 give up at once; R > 0 wait
    // about a second (R + 1000 / R x R times 1 ms) for each next byte; R < 0 wait for ever.
    int32_t retryCount = 0;
    // Asked after each 1 ms of waiting, for a file that grows or for whoever writes into a pipe,
    // and about once for each MB that is read; false ends the read with iffAborted.
    platform::GoOn goOn;

    // Starts a root context on a stream (not owned, not closed). forceStream treats a regular file
    // as one that cannot seek. iffNotAFile for anything but a file, FIFO or character device.
    [[nodiscard]] int open(FILE* stream, bool forceStream = false);

    // Skips what is left of the current chunk and reads the next header (and a group's type).
    // Returns the identifier, iffEndOfGroup, or another code. At the root iffEndOfGroup means end
    // of file.
    [[nodiscard]] int next();
    // next, then the handler if it is a group. What the handler returned (iffBlockIgnored as
    // iffOk), iffOk for a group without handler, or a plain chunk's identifier.
    [[nodiscard]] int dispatch();
    // The second half of dispatch, for the group the context is positioned on.
    [[nodiscard]] int callHandler();

    // Makes `child` the context inside the current group, before its first chunk. iffPastBoundary
    // for a group that passes the end of its own group or ends at an odd position; iffBadFile for
    // more than iffMaxDepth levels. The parent must stay where it is until leave.
    [[nodiscard]] int enter(IffReader& child);
    // Hands the position back to the parent. Once per successful enter, also after an error inside.
    void leave();

    // Enters the group, dispatches until a non-zero result, leaves. A plain chunk gives iffBadFile,
    // the end of the group iffOk. In a list `table` (when not null) replaces the handlers inside.
    [[nodiscard]] int parseGroup(const IffHandlers* table = nullptr);
    // Walks the group without looking at anything, so that its end is found.
    [[nodiscard]] int skipGroup();

    // Reads exactly n bytes of the current chunk's body. iffBlockTooShort when fewer are left in
    // it; iffIncomplete or iffPartialIo at the end of a file, iffBrokenPipe at the end of a stream.
    [[nodiscard]] int readBytes(void* buffer, size_t n);
    // Skips the rest of the current chunk and its pad bytes.
    [[nodiscard]] int skipChunk();

    // --- the current chunk ---
    int32_t chunkId() const { return chunkId_; }       // or a negative code when there is none
    uint32_t chunkSize() const { return chunkSize_; }  // as in the file; see sizeKnown
    // The identifier that the last header began with, whatever became of it; 0 when it was not
    // whole.
    int32_t seenId() const { return seenId_; }
    bool sizeKnown() const { return iffSizeKnown(chunkSize_); }
    int32_t groupType() const { return groupType_; }  // 0 for a plain chunk
    uint32_t consumed() const {
        return static_cast<uint32_t>(consumed_);
    }  // bytes read of the body
    // Bytes left in the body: no more than the chunk and the group around it have room for.
    uint64_t chunkBytesLeft() const;

    // --- the context; consumed, groupEnd and streamBytesLeft have no caller in the viewer ---
    IffReader* parent() const { return parent_; }  // its current chunk is the group around this one
    uint32_t flags() const { return flags_; }      // IffFlag
    bool onGroup() const { return (flags_ & iffFlagGroup) != 0; }
    bool seekable() const { return (flags_ & iffFlagStream) == 0; }
    uint32_t depth() const { return depth_; }        // 0 at the root
    uint64_t position() const { return position_; }  // from where the root was opened
    uint64_t groupEnd() const { return groupEnd_; }  // iffRootEnd when not known
    uint32_t fileSize() const { return fileSize_; }  // at open; 0 for a stream
    FILE* stream() const { return stream_; }
    // Bytes the file still holds from here on, asked anew; UINT64_MAX when that cannot be known.
    uint64_t streamBytesLeft() const;

 private:
    int readRaw(void* buffer, size_t n);
    bool mayGoOn();
    int waitForMore(int64_t& waits);
    int awaitBytes(size_t& ready);
    int skipRaw(uint64_t n);
    int skipToMarker();
    int skipTo(uint64_t offset);
    int skipRootPad(uint64_t size);
    int readHeader(int32_t& id, uint32_t& size);
    int lookForEnd(bool& ended);
    int endUnknownGroup(uint32_t endSize);
    int classify(int32_t id, uint32_t size);
    int readGroupType();

    IffReader* parent_ = nullptr;
    FILE* stream_ = nullptr;
    uint32_t fileSize_ = 0;
    uint32_t flags_ = 0;
    int32_t chunkId_ = 0;
    uint32_t chunkSize_ = 0;
    int32_t groupType_ = 0;
    int32_t seenId_ = 0;
    uint64_t consumed_ = 0;
    uint64_t position_ = 0;
    uint64_t askedAt_ = 0;        // position at which goOn was last asked while reading
    uint64_t startPosition_ = 0;  // where this context began
    uint64_t groupEnd_ = iffRootEnd;
    uint32_t alignMask_ = 0;       // of the chunks in this context
    uint32_t groupAlignMask_ = 0;  // of the chunks in the current chunk, a group
    uint32_t depth_ = 0;
    int64_t streamStart_ = 0;     // position of the stream at open
    bool mayHaveToWait_ = false;  // a read may have to wait for whoever writes the stream
};

// Opens the root context on the stream, takes handlers, user, retryCount and goOn from
// `root`, and dispatches once. What the handler returned; iffNotIff when the stream does not start
// with a group. `root` stays positioned behind what was read.
[[nodiscard]] int parseFile(IffReader& root, FILE* stream);

// The same, and then goes on with the groups that follow in the file until one gives a non-zero
// result. Bytes behind the first group that are no group end the parse with iffOk.
[[nodiscard]] int parseWholeFile(IffReader& root, FILE* stream);

}  // namespace vistel
