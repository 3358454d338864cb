#include "sequence/source_stream.h"

#include <cerrno>
#include <new>

#include "host/messages.h"
#include "iff/file_kind.h"
#include "platform/files.h"
#include "platform/process.h"
#include "sequence/converted_files.h"
#include "sequence/frame_sequence.h"

namespace vistel {

namespace {

constexpr const char* imageConverter = "pixconv";
constexpr const char* olderConverter = "rasconv";

// Every other kind is the image converter's.
constexpr struct {
    int kind;
    SourceReader reader;
} readers[] = {
    {fileKindImage, SourceReader::direct},
    {fileKindImageList, SourceReader::direct},
    {fileKindContainer, SourceReader::direct},
    {fileKindRaster1, SourceReader::olderConverter},
    {fileKindRaster2, SourceReader::olderConverter},
    {fileKindRaster3, SourceReader::olderConverter},
    {fileKindOldRaster, SourceReader::olderConverter},
};

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

void SourceStream::release(const std::function<bool()>& goOn) {
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

SourceReader readerOfKind(int kind) {
    for (const auto& entry : readers)
        if (entry.kind == kind) return entry.reader;
    return SourceReader::imageConverter;
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
    opened.complaint =
        formatMessage("s_VistelStrings.rVTConverterMissing", {converterName(opened.reader)});
}

void OpenedSource::connect() {
    if (reader == SourceReader::direct || !stream) return;
    convertedAs = platform::fileStamp(stream.file());
    const bool told = convertedAs && convertedFiles().contains(located, *convertedAs);
    const auto errors = told ? platform::CommandErrors::dropped : platform::CommandErrors::shown;
    OpenedSource converted = openCommand(converterCommand(reader, program, located), errors);
    if (converted.stream && convertedAs && !told)
        convertedFiles().remember(located, *convertedAs, std::nullopt);
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
        opened.complaint = messageText("s_VistelStrings.rVTNoImage");
        return opened;
    }
    opened.reader = readerOfFile(located, waitForWriter);
    findConverter(opened);
    return opened;
}

OpenedSource openCommand(const std::string& command, platform::CommandErrors errors) {
    OpenedSource opened;
    opened.stream = SourceStream(platform::openPipe(command, "r", errors), true);
    if (!opened.stream) opened.systemError = errno;
    return opened;
}

OpenedSource openFrameCommand(const std::string& command, int frame) {
    platform::setEnvironmentVariable("FRAME", std::to_string(frame));
    return openCommand(command);
}

OpenedSource openTestOutput() {
    const std::string command = platform::environmentVariable("VTTEST").value_or("");
    if (!command.empty()) return openCommand(command);
    // The bare name would have the interpreter look in the current folder, too.
    if (const auto program = converterProgram(SourceReader::imageConverter))
        return openCommand(platform::quotedCommand(*program));
    OpenedSource opened;
    opened.complaint = formatMessage("s_VistelStrings.rVTConverterMissing", {imageConverter});
    return opened;
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
