#include "sequence/source_stream.h"

#include <cerrno>
#include <new>

#include "host/messages.h"
#include "iff/file_kind.h"
#include "platform/files.h"
#include "platform/process.h"
#include "sequence/frame_sequence.h"

namespace vistel {

namespace {

constexpr const char* imageConverter = "pixconv";
constexpr const char* olderConverter = "rasconv";

}  // namespace

SourceStream::SourceStream(FILE* file, bool isPipe) : file_(file), isPipe_(isPipe) {
    // A standard stream outlives this object, and would outlive its buffer.
    if (!file || platform::isStandardStream(file)) return;
    const size_t blockSize = platform::readBlockSize();
    block_.reset(new (std::nothrow) char[blockSize]);
    if (block_) std::setvbuf(file, block_.get(), _IOFBF, blockSize);
}

int SourceStream::close(const std::function<bool()>& goOn) {
    if (!isPipe_ || !file_) {
        release();
        return 0;
    }
    return platform::closePipe(std::exchange(file_, nullptr), goOn);
}

void SourceStream::release() { end(platform::releasePipe); }
void SourceStream::abandon() { end(platform::abandonPipe); }

void SourceStream::end(void (*endPipe)(FILE*)) {
    FILE* file = std::exchange(file_, nullptr);
    if (!file) return;
    if (isPipe_)
        endPipe(file);
    else if (!platform::isStandardStream(file))
        std::fclose(file);
}

SourceReader readerOfKind(int kind) {
    switch (kind) {
        case fileKindImage:
        case fileKindImageList:
        case fileKindContainer:
            return SourceReader::direct;
        case fileKindRaster1:
        case fileKindRaster2:
        case fileKindRaster3:
        case fileKindOldRaster:
            return SourceReader::olderConverter;
        default:
            return SourceReader::imageConverter;
    }
}

const char* converterName(SourceReader reader) {
    return reader == SourceReader::olderConverter ? olderConverter : imageConverter;
}

std::string converterCommand(SourceReader reader, const std::string& program,
                             const std::string& file) {
    const char* options = reader == SourceReader::olderConverter ? "-s -B" : "";
    return platform::quotedCommand(program, options, file, "stdout");
}

SourceReader readerOfFile(const std::string& located, bool waitForWriter) {
    // Only a path of its own keeps the probe from taking a file of this name for standard input.
    const bool nameOfStream = Tstring(located).equalsIgnoringCase("stdin");
    const int kind = probeFileKind(nameOfStream ? "./" + located : located);
    if (waitForWriter && kind == fileKindUnreadable) return SourceReader::direct;
    return readerOfKind(kind);
}

// Looks for the converter's program for the file: in `program`, or the complaint in its place.
static void findConverter(OpenedSource& opened) {
    if (opened.reader == SourceReader::direct) return;
    if (const std::optional<std::string> program = converterProgram(opened.reader)) {
        opened.program = *program;
        return;
    }
    opened.stream.release();
    opened.complaint = formatMessage("s_VistelStrings.rVTConverterMissing",
                                     {opened.located, converterName(opened.reader)});
}

void OpenedSource::connect() {
    if (reader == SourceReader::direct || !stream) return;
    OpenedSource converted = openCommand(converterCommand(reader, program, located));
    stream = std::move(converted.stream);
    systemError = converted.systemError;
    reader = SourceReader::direct;
}

OpenedSource openFrameFile(const Tstring& name, bool waitForWriter) {
    OpenedSource opened;
    Tstring located;
    opened.stream = SourceStream(locateFrameFile(name, located), false);
    if (!opened.stream) {
        opened.systemError = errno;
        return opened;
    }
    const platform::StreamStatus status = platform::streamStatus(opened.stream.file());
    if (status.kind != platform::StreamKind::regular) return opened;
    opened.located = located;
    if (status.size == 0 && !waitForWriter) {
        opened.stream.release();
        opened.complaint = formatMessage("s_VistelStrings.rVTNoImage", {located});
        return opened;
    }
    opened.reader = readerOfFile(located, waitForWriter);
    findConverter(opened);
    return opened;
}

OpenedSource openCommand(const std::string& command) {
    OpenedSource opened;
    opened.stream = SourceStream(platform::openPipe(command, "r"), true);
    if (!opened.stream) opened.systemError = errno;
    return opened;
}

OpenedSource openFrameCommand(const std::string& command, int frame) {
    platform::setEnvironmentVariable("FRAME", std::to_string(frame));
    return openCommand(command);
}

OpenedSource openTestOutput() {
    return openCommand(platform::environmentVariable("VTTEST").value_or(imageConverter));
}

OpenedSource openStandardInput() {
    OpenedSource opened;
    opened.stream = SourceStream(platform::duplicateStandardStream(0, "r+"), false);
    if (opened.stream) return opened;
    opened.systemError = errno;
    if (errno == EBADF) opened.complaint = messageText("s_VistelStrings.rVTStdinClosed");
    return opened;
}

}  // namespace vistel
