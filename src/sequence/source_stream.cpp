#include "sequence/source_stream.h"

#include <new>

#include "platform/files.h"
#include "platform/process.h"

namespace vistel {

SourceStream::SourceStream(FILE* file, bool isPipe) : file_(file), isPipe_(isPipe) {
    // A standard stream outlives this object, and would outlive its buffer.
    if (!file || platform::isStandardStream(file)) return;
    const size_t blockSize = platform::readBlockSize();
    block_.reset(new (std::nothrow) char[blockSize]);
    if (block_) std::setvbuf(file, block_.get(), _IOFBF, blockSize);
}

int SourceStream::close(const platform::GoOn& goOn) {
    if (isPipe_ && file_) return platform::closePipe(std::exchange(file_, nullptr), goOn);
    release();
    return 0;
}

void SourceStream::release(const platform::GoOn& goOn) {
    end([&](FILE* pipe) { platform::releasePipe(pipe, goOn); });
}

void SourceStream::abandon() { end(platform::abandonPipe); }

void SourceStream::end(const std::function<void(FILE*)>& endPipe) {
    FILE* file = std::exchange(file_, nullptr);
    if (!file) return;
    if (isPipe_)
        endPipe(file);
    else if (!platform::isStandardStream(file))
        std::fclose(file);
}

}  // namespace vistel
