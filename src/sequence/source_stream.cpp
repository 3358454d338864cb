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

SourceReader readerOfFile(const std::string& located, bool waitForWriter) {
    // Only a path of its own keeps the probe from taking a file of this name for standard input.
    const bool nameOfStream = Tstring(located).equalsIgnoringCase("stdin");
    const int kind = probeFileKind(nameOfStream ? "./" + located : located);
    if (waitForWriter && kind == fileKindUnreadable) return SourceReader::direct;
    return readerOfKind(kind);
}

}  // namespace

SourceStream::SourceStream(FILE* file, bool isPipe) : file_(file), isPipe_(isPipe) {
    // A standard stream outlives this object, and would outlive its buffer.
    if (!file || platform::isStandardStream(file)) return;
    const size_t blockSize = platform::readBlockSize();
    block_.reset(new (std::nothrow) char[blockSize]);
    if (block_) std::setvbuf(file, block_.get(), _IOFBF, blockSize);
}

int SourceStream::close() {
    FILE* file = std::exchange(file_, nullptr);
    if (!file) return 0;
    if (isPipe_) return platform::closePipe(file);
    if (!platform::isStandardStream(file)) std::fclose(file);
    return 0;
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

OpenedSource convertedSource(SourceStream file, SourceReader reader,
                             const std::optional<std::string>& program,
                             const std::string& located) {
    if (reader == SourceReader::direct) return {std::move(file), 0, {}, {}};
    file.close();
    if (!program) {
        return {
            {},
            0,
            formatMessage("s_VistelStrings.rVTConverterMissing", {located, converterName(reader)}),
            {}};
    }
    return openCommand(converterCommand(reader, *program, located));
}

OpenedSource openFrameFile(const Tstring& name, bool waitForWriter) {
    Tstring located;
    SourceStream file(locateFrameFile(name, located), false);
    if (!file) return {{}, errno, {}, {}};
    const platform::StreamStatus status = platform::streamStatus(file.file());
    if (status.kind != platform::StreamKind::regular) return {std::move(file), 0, {}, {}};
    if (status.size == 0 && !waitForWriter)
        return {{}, 0, formatMessage("s_VistelStrings.rVTNoImage", {located}), {}};
    const SourceReader reader = readerOfFile(located, waitForWriter);
    if (reader == SourceReader::direct) return {std::move(file), 0, {}, located};
    return convertedSource(std::move(file), reader, platform::findProgram(converterName(reader)),
                           located);
}

OpenedSource openCommand(const std::string& command) {
    SourceStream pipe(platform::openPipe(command, "r"), true);
    const int error = pipe ? 0 : errno;
    return {std::move(pipe), error, {}, {}};
}

OpenedSource openFrameCommand(const std::string& command, int frame) {
    platform::setEnvironmentVariable("FRAME", std::to_string(frame));
    return openCommand(command);
}

OpenedSource openTestOutput() {
    return openCommand(platform::environmentVariable("VTTEST").value_or(imageConverter));
}

OpenedSource openStandardInput() {
    SourceStream input(platform::duplicateStandardStream(0, "r+"), false);
    const int error = input ? 0 : errno;
    return {std::move(input), error, {}, {}};
}

}  // namespace vistel
