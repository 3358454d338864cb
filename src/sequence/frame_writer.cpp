#include "sequence/frame_writer.h"

#include <cerrno>
#include <cstring>
#include <vector>

#include "host/image_plugins.h"
#include "host/messages.h"
#include "iff/iff_writer.h"
#include "iff/result_codes.h"
#include "platform/process.h"

namespace vistel {

namespace {

constexpr uint32_t maskBits = 0xFF000000;

// Colour, with the mask where there is one; depth only of what is nothing else.
uint32_t flagsOf(const FrameStore& frame) {
    if (frame.colour.empty()) return imageBlack | imageZ;
    return imageColour | (frame.header.has(imageMask) ? imageMask : 0u);
}

// A full disk, a folder that nobody may write to, a medium that fails.
bool isReasonOfPlace(int systemError) {
    return systemError != 0 && systemError != EINVAL && systemError != ENOMEM;
}

}  // namespace

bool FrameWriter::open(const OutputTarget& target) {
    errno = 0;
    const bool converted = target.formatKey && platform::findProgram(imageConverter);
    if (converted || target.path == "stdout") {
        if (writer_.open(target.path, converted ? &*target.formatKey : nullptr) != iffOk)
            return false;
        converter_ = writer_.container()->converterPipe();
        writer_.container()->setGoOn([this] { return !stopped_; });
        return true;
    }
    toFile_ = true;
    FILE* stream = file_.open(target.path);
    return stream && writer_.openStream(stream) == iffOk;
}

int FrameWriter::writeRows(const FrameStore& frame, bool maskInverted) {
    constexpr size_t rowsAtOnce = 256;  // begin their way to the disk while others are packed
    std::vector<uint32_t> inverted(maskInverted ? static_cast<size_t>(frame.width) : 0);
    for (size_t y = static_cast<size_t>(frame.height); y-- > 0;) {
        const uint32_t* row = frame.colour.empty() ? nullptr : frame.colour.row(y);
        if (row && maskInverted) {
            for (size_t x = 0; x < inverted.size(); ++x) inverted[x] = row[x] ^ maskBits;
            row = inverted.data();
        }
        const int code = writer_.writeScanline(row, row ? nullptr : frame.z.row(y));
        if (code != iffOk) return code;
        if (toFile_ && y % rowsAtOnce == 0) file_.beginWriteOut();
    }
    return iffOk;
}

int FrameWriter::writeImage(const FrameStore& frame, bool maskInverted) {
    const auto width = static_cast<uint32_t>(frame.width);
    const auto height = static_cast<uint32_t>(frame.height);
    writer_.setTwoThreads(true);
    int code = writer_.setRowsFromLast(true);
    if (code == iffOk) code = writer_.writeText("ANNO", messageText(Message::rVTImgWritten));
    if (code == iffOk) code = writer_.writeHeader(width, height, flagsOf(frame));
    if (code == iffOk) code = writer_.beginImageData();
    if (code == iffOk) code = writeRows(frame, maskInverted);
    if (code == iffOk) code = writer_.endImage();
    return code;
}

FrameWritten FrameWriter::write(const FrameStore& frame, bool maskInverted) {
    errno = 0;
    int code = writeImage(frame, maskInverted);
    int systemError = code == iffOk ? 0 : errno;
    // A converter is not to take half a picture for a whole one.
    const int closed = code == iffOk && !stopped_ ? writer_.close() : writer_.abandon();
    if (code == iffOk && closed != iffOk) {
        code = closed;
        systemError = errno;
    }
    if (code == iffOk && toFile_ && !file_.finish()) {
        code = iffIoError;
        systemError = errno;
    }
    if (stopped_) return {iffAborted, messageText(Message::rVTConverterStopped), false};
    if (code == iffOk) return {};
    if (converter_) return {code, messageText(Message::rVTConverterFailed), false};
    const bool bySystem = code == iffIoError && systemError != 0;
    return {code, bySystem ? Tstring(std::strerror(systemError)) : Tstring(errorText(code)),
            bySystem && isReasonOfPlace(systemError)};
}

void FrameWriter::stop() {
    stopped_ = true;
    if (converter_) platform::endCommand(converter_);
}

}  // namespace vistel
