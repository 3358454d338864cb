#include "sequence/opened_source.h"

#include <cerrno>

#include "host/messages.h"
#include "platform/clock.h"
#include "sequence/foreign_input.h"
#include "sequence/frame_sequence.h"

namespace vistel {

void OpenedSource::connect(ConvertedFiles& converted) {
    if (reader == SourceReader::direct || !stream) return;
    convertedAs = platform::fileStamp(stream.file());
    const bool told = convertedAs && converted.contains(located, *convertedAs);
    const bool quiet = told || converted.isWrong(located);
    const auto errors = quiet ? platform::CommandErrors::dropped : platform::CommandErrors::shown;
    const Tstring file = located.empty() ? Tstring("-") : located;
    OpenedSource output = openCommand(converterCommand(reader, program, file), errors);
    if (output.stream && convertedAs && !told)
        converted.remember(located, *convertedAs, std::nullopt);
    stream = std::move(output.stream);
    systemError = output.systemError;
    reader = SourceReader::direct;
}

// Looks for the converter's program for the file: in `program`, or the complaint in its place.
static void findConverter(OpenedSource& opened) {
    if (opened.reader == SourceReader::direct) return;
    if (const std::optional<std::string> program = converterProgram(opened.reader)) {
        opened.program = *program;
        return;
    }
    opened.stream.release();
    opened.complaint = formatMessage(Message::rVTConverterMissing, {converterName(opened.reader)});
}

OpenedSource openFrameFile(FramePlaces& places, const Tstring& name, bool waitForWriter) {
    OpenedSource opened;
    opened.name = name;
    Tstring located;
    opened.stream = SourceStream(locateFrameFile(places, name, located), false);
    if (!opened.stream) {
        opened.systemError = errno;
        return opened;
    }
    const platform::StreamStatus status = platform::streamStatus(opened.stream.file());
    if (status.kind != platform::StreamKind::regular) return opened;
    opened.located = located;
    if (status.size == 0 && !waitForWriter) {
        opened.stream.release();
        opened.complaint = messageText(Message::rVTNoImage);
        return opened;
    }
    opened.reader = readerOfFile(located, waitForWriter);
    findConverter(opened);
    return opened;
}

int lastStatus(SourceStream& stream, const platform::GoOn& goOn) {
    constexpr uint32_t lastMoments = 2000;  // milliseconds
    const uint32_t begin = platform::tickMilliseconds();
    return stream.close([&] {
        return platform::tickMilliseconds() - begin < lastMoments && platform::mayGoOn(goOn);
    });
}

bool converterHasTold(OpenedSource& source, const platform::GoOn& goOn) {
    constexpr int leastOfSignals = 128;  // who was ended may have said nothing
    if (!source.convertedAs) return false;
    const int status = lastStatus(source.stream, goOn);
    return status > 0 && status < leastOfSignals;
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
    opened.complaint =
        formatMessage(Message::rVTConverterMissing, {converterName(SourceReader::imageConverter)});
    return opened;
}

OpenedSource openStandardInput() {
    OpenedSource opened;
    opened.stream = SourceStream(platform::duplicateStandardStream(0, "r+"), false);
    if (opened.stream) {
        FILE* const file = opened.stream.file();
        if (platform::streamStatus(file).kind != platform::StreamKind::regular) return opened;
        // The converter shares the place in the file.
        const bool foreign = beginsForeign(file);
        if (foreign && platform::giveBackReadAhead(file)) {
            opened.reader = SourceReader::imageConverter;
            findConverter(opened);
        }
        return opened;
    }
    opened.systemError = errno;
    if (errno == EBADF) opened.complaint = messageText(Message::rVTStdinClosed);
    return opened;
}

}  // namespace vistel
