// An open stream and how it must be closed: a command is not only a stream, a file is closed unless
// it is one of the three standard streams. It is read in large blocks.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <utility>

#include "platform/go_on.h"

namespace vistel {

class SourceStream {
 public:
    SourceStream() = default;
    // Takes the stream, of which nothing has been read yet; null for none.
    SourceStream(FILE* file, bool isPipe);
    SourceStream(SourceStream&& other) noexcept
        : file_(std::exchange(other.file_, nullptr)),
          isPipe_(other.isPipe_),
          block_(std::move(other.block_)) {}
    SourceStream& operator=(SourceStream&& other) noexcept {
        std::swap(file_, other.file_);
        std::swap(isPipe_, other.isPipe_);
        std::swap(block_, other.block_);
        return *this;
    }
    ~SourceStream() { abandon(); }

    explicit operator bool() const { return file_ != nullptr; }
    FILE* file() const { return file_; }
    bool isPipe() const { return isPipe_; }

    // One of the three ends it. The exit status of a command, waited for as long as `goOn` wants,
    // else -1; 0 for files and for nothing open.
    int close(const platform::GoOn& goOn);
    // All that was wanted of it has been read: a command may still do what it does. It is waited
    // for only when too many do that already, and only with a `goOn`.
    void release(const platform::GoOn& goOn = {});
    // It is not wanted any more: a command is ended.
    void abandon();

 private:
    void end(const std::function<void(FILE*)>& endPipe);

    FILE* file_ = nullptr;
    bool isPipe_ = false;
    std::unique_ptr<char[]> block_;  // the stream's buffer
};

}  // namespace vistel
