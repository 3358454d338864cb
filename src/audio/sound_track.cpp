#include "audio/sound_track.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

#include "audio/audio_errors.h"
#include "audio/chunk_reading.h"
#include "audio/picked_frames.h"

namespace vistel {

const char* SoundTrack::whyNotPlayed(AFfilehandle& file) {
    const int32_t channels = AFgetchannels(&file, afDefaultTrack);
    if (channels != 1 && channels != 2 && channels != 4)
        return "only 1, 2 or 4 channels are played";
    int32_t format = 0, width = 0;
    if (AFgetsampfmt(&file, afDefaultTrack, &format, &width) != 0 || width < 1 || width > 24)
        return "only samples of 1 to 24 bits are played";
    const double rate = AFgetrate(&file, afDefaultTrack);
    if (!(rate >= 1 && rate < 2147483648.0)) return "there is no such sample rate";
    return nullptr;
}

std::optional<SoundTrack> SoundTrack::load(const std::string& name, const char*& whyNot) {
    SoundTrack track;
    track.file_.reset(AFopenfile(name, "r", nullptr));
    AFfilehandle* file = track.file_.get();
    if (!file) return std::nullopt;
    whyNot = whyNotPlayed(*file);
    if (whyNot) return std::nullopt;
    int32_t width = 0;
    AFgetsampfmt(file, afDefaultTrack, &track.sampleFormat_, &width);
    track.fileFormat_ = AFgetfilefmt(file, nullptr);
    track.sampleBytes_ = width <= 8 ? 1 : width <= 16 ? 2 : 3;
    track.containerBytes_ = track.sampleBytes_ == 3 ? 4 : track.sampleBytes_;
    track.channels_ = AFgetchannels(file, afDefaultTrack);
    track.rate_ = static_cast<int32_t>(AFgetrate(file, afDefaultTrack));
    track.frames_ = AFgetframecnt(file, afDefaultTrack);
    return track;
}

std::optional<SoundTrack> SoundTrack::open(const std::string& name) {
    const char* whyNot = nullptr;
    return load(name, whyNot);
}

// The first report of the library on this thread, while it is caught.
static thread_local std::optional<std::string> caughtReport;

static std::string reasonOf(int32_t code, std::string text) {
    if (code == afOpenFailed) return std::strerror(errno);
    if (code == afWarning) return "no sound of a known type (AIFF, AIFF-C, WAVE)";
    if (code == afNotPcm || code == afBadCompression) return "compressed sound is not played";
    const size_t operation = text.find(": ");
    if (operation != std::string::npos) text.erase(0, operation + 2);
    while (text.ends_with('\n')) text.pop_back();
    return text;
}

std::optional<SoundTrack> SoundTrack::open(const std::string& name, std::string& why) {
    caughtReport.reset();
    const AFerrorfunc before = AFseterrorfunc([](int32_t code, const char* text) {
        if (!caughtReport) caughtReport = reasonOf(code, text);
    });
    const char* whyNot = nullptr;
    auto track = load(name, whyNot);
    AFseterrorfunc(before);
    if (!track) why = whyNot ? whyNot : caughtReport.value_or("it cannot be read");
    return track;
}

void SoundTrack::seek(int64_t frame) {
    position_ = std::max<int64_t>(frame, 0);
    AFseekframe(file_.get(), afDefaultTrack, std::max<int64_t>(position_ - start_, 0));
}

int64_t SoundTrack::read(void* buffer, int64_t frames, double speed) {
    auto* bytes = static_cast<uint8_t*>(buffer);
    int64_t silent = 0;
    if (position_ < start_) {
        const double before = static_cast<double>(start_ - position_) / speed;
        silent = before < static_cast<double>(frames) ? static_cast<int64_t>(before) : frames;
        const int silence = sampleFormat_ == afUnsigned ? 128 : 0;
        std::memset(bytes, silence, static_cast<size_t>(silent * frameBytes()));
        const auto passed = static_cast<int64_t>(static_cast<double>(silent) * speed);
        position_ = silent < frames ? start_ : std::min(start_, position_ + passed);
        if (silent == frames) return frames;
        bytes += silent * frameBytes();
        frames -= silent;
    }
    if (std::fabs(speed - 1) <= 1e-10) return silent + readFrames(bytes, frames);
    return silent +
           (speed < 1 ? readSlower(bytes, frames, speed) : readFaster(bytes, frames, speed));
}

int64_t SoundTrack::readFrames(void* buffer, int64_t frames) {
    const int64_t got = AFreadframes(file_.get(), afDefaultTrack, buffer, frames);
    position_ += got;
    return got;
}

// How many output frames the input frames make that were read of those that were wanted.
static int64_t outputFrames(int64_t got, int64_t wanted, int64_t frames, double speed) {
    if (got == wanted) return frames;
    return std::min(frames, static_cast<int64_t>(std::ceil(static_cast<double>(got) / speed)));
}

// However slow it is, it goes on.
static int64_t inputFrames(int64_t frames, double speed) {
    return std::max<int64_t>(1, static_cast<int64_t>(static_cast<double>(frames) * speed));
}

int64_t SoundTrack::readSlower(uint8_t* buffer, int64_t frames, double speed) {
    const int64_t wanted = inputFrames(frames, speed);
    const int64_t got = readFrames(buffer, wanted);
    if (got == 0) return 0;
    const int64_t count = outputFrames(got, wanted, frames, speed);
    pickFrames(buffer, got, static_cast<size_t>(frameBytes()), speed, buffer, count);
    return count;
}

int64_t SoundTrack::readFaster(uint8_t* buffer, int64_t frames, double speed) {
    const int64_t wanted = inputFrames(frames, speed);
    const auto bytes = static_cast<uint64_t>(wanted * frameBytes());
    if (scratch_.size() < bytes && !makeRoom(scratch_, bytes)) return 0;
    const int64_t got = readFrames(scratch_.data(), wanted);
    if (got == 0) return 0;
    const int64_t count = outputFrames(got, wanted, frames, speed);
    pickFrames(scratch_.data(), got, static_cast<size_t>(frameBytes()), speed, buffer, count);
    return count;
}

}  // namespace vistel
