// Sound files made byte by byte, and what the library reports of them.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "audio/audio_errors.h"
#include "audio/audio_file.h"
#include "iff/iff_bytes.h"
#include "platform/process.h"

namespace vistel::test {

// Keeps what is reported while it lives. One at a time.
class Reports {
 public:
    Reports() : before_(AFseterrorfunc(keep)) { kept().clear(); }
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;
    ~Reports() { AFseterrorfunc(before_); }

    // "CODE text" of each report, one behind the other.
    std::string all() const {
        std::string text;
        for (const std::string& report : kept()) text += report;
        return text;
    }

 private:
    static std::vector<std::string>& kept() {
        static std::vector<std::string> reports;
        return reports;
    }
    static void keep(int32_t code, const char* text) {
        kept().push_back(std::to_string(code) + " " + text);
    }
    AFerrorfunc before_;
};

struct HandleCloser {
    void operator()(AFfilehandle* file) const { (void)AFclosefile(file); }
};
using Handle = std::unique_ptr<AFfilehandle, HandleCloser>;

// 44100 as an 80-bit number.
inline Bytes rate44100() { return Bytes().u16(0x400E).u32(0xAC440000).u32(0); }

inline Bytes aiff(const Bytes& chunks) { return Bytes().group("FORM", "AIFF", chunks); }
inline Bytes aiffC(const Bytes& chunks) { return Bytes().group("FORM", "AIFC", chunks); }
inline Bytes common(unsigned channels, uint32_t frames, unsigned width) {
    const Bytes body = Bytes().u16(channels).u32(frames).u16(width).add(rate44100());
    return Bytes().chunk("COMM", body, 2);
}
inline Bytes commonOfAiffC(unsigned channels, uint32_t frames, unsigned width, const char* type,
                           const Bytes& name) {
    Bytes body = Bytes().u16(channels).u32(frames).u16(width).add(rate44100());
    return Bytes().chunk("COMM", body.add(type).add(name), 2);
}
inline Bytes sound(const Bytes& samples) {
    return Bytes().chunk("SSND", Bytes().u32(0).u32(0).add(samples), 2);
}

// Little-endian numbers for WAVE files.
inline Bytes little16(unsigned value) { return Bytes().u8(value & 255).u8(value >> 8 & 255); }
inline Bytes little32(uint32_t value) {
    return little16(value & 0xFFFF).add(little16(value >> 16));
}
inline Bytes waveChunk(const char* id, uint32_t size, const Bytes& body) {
    return Bytes(id).add(little32(size)).add(body);
}
inline Bytes waveChunk(const char* id, const Bytes& body) {
    return waveChunk(id, static_cast<uint32_t>(body.size()), body);
}
inline Bytes waveFormat(unsigned channels, unsigned width, unsigned tag = 1) {
    const unsigned alignment = channels * ((width + 7) / 8);
    Bytes body = little16(tag).add(little16(channels)).add(little32(44100));
    body.add(little32(44100 * alignment)).add(little16(alignment)).add(little16(width));
    return waveChunk("fmt ", body);
}
inline Bytes wave(const Bytes& chunks) {
    return Bytes("RIFF")
        .add(little32(static_cast<uint32_t>(chunks.size() + 4)))
        .add("WAVE")
        .add(chunks);
}

// A file on disk that is open for reading; no handle when it was refused.
struct OpenedFile {
    explicit OpenedFile(const Bytes& bytes, const AFfilesetup* setup = nullptr)
        : file(bytes), handle(AFopenfile(file.name(), "r", setup)) {}
    AFfilehandle* operator->() const { return handle.get(); }
    explicit operator bool() const { return handle != nullptr; }

    // All frames that are there, of samples of this type, in reads of so many.
    template <class Sample>
    std::vector<Sample> samples(int64_t framesOfARead = 1000) const {
        std::vector<Sample> all;
        const auto channels = static_cast<size_t>(handle->track().channels);
        std::vector<Sample> part(static_cast<size_t>(framesOfARead) * channels);
        for (int64_t got;
             (got = AFreadframes(handle.get(), afDefaultTrack, part.data(), framesOfARead)) > 0;)
            all.insert(all.end(), part.begin(),
                       part.begin() + static_cast<std::ptrdiff_t>(got) *
                                          static_cast<std::ptrdiff_t>(channels));
        return all;
    }

    TemporaryFile file;
    Handle handle;
};

// What is reported of a file that is opened, and whether it is refused.
inline std::string refused(const Bytes& bytes, const AFfilesetup* setup = nullptr) {
    Reports reports;
    const OpenedFile file(bytes, setup);
    return (file ? "opened: " : "refused: ") + reports.all();
}

// What is reported of a stream that cannot seek, which is opened as what the setup says; the text
// is words for the command interpreter's echo.
inline std::string refusedFromPipe(const std::string& text, const AFfilesetup& setup) {
    Reports reports;
    FILE* pipe = platform::openPipe("echo " + text, "r");
    {
        const Handle file(AFopenfd(dup(platform::streamDescriptor(pipe)), "r", &setup));
        EXPECT_EQ(file, nullptr);
    }
    platform::closePipe(pipe);
    return reports.all();
}

// Tries the file as it is cut at every byte, reading what opens to its end.
inline void cutEverywhere(const Bytes& bytes) {
    Reports reports;
    TemporaryFile file;
    for (size_t length = 0; length <= bytes.size(); ++length) {
        file.write(bytes.cut(length));
        const Handle handle(AFopenfile(file.name(), "r", nullptr));
        if (!handle) continue;
        const int64_t promised = AFgetframecnt(handle.get(), afDefaultTrack);
        std::vector<uint8_t> buffer(4096);
        int64_t all = 0;
        for (int64_t got; (got = AFreadframes(handle.get(), afDefaultTrack, buffer.data(), 8)) > 0;)
            all += got;
        EXPECT_LE(all, promised) << length;
        EXPECT_LE(all, static_cast<int64_t>(length)) << length;
        EXPECT_TRUE(all == promised || length < bytes.size());
    }
}

}  // namespace vistel::test
