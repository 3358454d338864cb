#include "stb_reading.h"

#define STBI_NO_STDIO
#include <stb_image.h>

#include <algorithm>
#include <cstring>

#include "byte_source.h"
#include "samples.h"
#include "stb_memory.h"

namespace vistel {

namespace {

// What the library takes besides the picture: tables, and its copies in other layouts.
constexpr uint64_t workBytes = uint64_t{16} << 20;
constexpr uint64_t bytesPerPixel = 32;
constexpr uint64_t mostWorkBytes = 2 * mostPictureBytes;

struct EndsEarly {};

// The file as the library sees it. The library takes bytes that are not there for zeros; here the
// reading ends instead, by an exception that passes through it (StbMemory frees what it held). It
// reads ahead into one buffer of its own, the first that it fills, where fewer bytes than asked for
// are no fault; bytes for any other place are needed.
class Stream {
 public:
    explicit Stream(const SourceFile& source) : source_(source) {}

    static int read(void* user, char* to, int bytes) {
        auto& stream = *static_cast<Stream*>(user);
        if (!stream.buffer_) stream.buffer_ = to;
        const size_t there = size_t(std::min(uint64_t(bytes), stream.source_.left()));
        if (there == 0 || (to != stream.buffer_ && there < size_t(bytes))) throw EndsEarly();
        if (!stream.source_.read(to, there)) throw EndsEarly();
        return int(there);
    }
    static void skip(void* user, int bytes) {
        // Past the end is no fault (a last row without its padding) as long as nothing is read
        // there.
        auto& source = static_cast<Stream*>(user)->source_;
        if (!source.goTo(source.position() + std::min(uint64_t(bytes), source.left())))
            throw EndsEarly();
    }
    static int atEnd(void* user) { return static_cast<Stream*>(user)->source_.left() == 0; }

    // Runs one call of the library on the file from its start.
    template <class Call>
    auto from(Call call) {
        buffer_ = nullptr;
        if (!source_.goTo(0)) throw EndsEarly();
        const stbi_io_callbacks callbacks{read, skip, atEnd};
        return call(&callbacks, static_cast<void*>(this));
    }

 private:
    ByteSource source_;
    char* buffer_ = nullptr;
};

struct Description {
    int width = 0, height = 0, channels = 0;
};

Failure failureOf(const StbMemory& memory, const char* typeName) {
    if (memory.refused()) return "the picture needs too much memory";
    const char* reason = stbi_failure_reason();
    return std::string("not ") + typeName + " picture that can be read (" +
           (reason ? reason : "damaged") + ")";
}

// Size and channels, and the memory for the picture and for reading it.
Failure prepare(Stream& stream, StbMemory& memory, const char* typeName, Description& description,
                Picture& picture) {
    const auto describe = [&](auto* callbacks, void* user) {
        return stbi_info_from_callbacks(callbacks, user, &description.width, &description.height,
                                        &description.channels);
    };
    if (!stream.from(describe)) return failureOf(memory, typeName);
    const bool wide = stream.from(
        [](auto* callbacks, void* user) { return stbi_is_16_bit_from_callbacks(callbacks, user); });
    if (auto failure =
            picture.allocate(uint32_t(description.width), uint32_t(description.height), wide))
        return failure;
    const uint64_t pixels = uint64_t{picture.width} * picture.height;
    memory.setMost(std::min(mostWorkBytes, workBytes + pixels * bytesPerPixel));
    return {};
}

bool sameSize(const Description& description, const Picture& picture) {
    return description.width == int(picture.width) && description.height == int(picture.height);
}

Failure readSamples(Stream& stream, StbMemory& memory, const char* typeName, Picture& picture) {
    Description description;
    if (auto failure = prepare(stream, memory, typeName, description, picture)) return failure;
    const void* pixels = stream.from([&](auto* callbacks, void* user) -> const void* {
        int *width = &description.width, *height = &description.height,
            *channels = &description.channels;
        if (picture.wide)
            return stbi_load_16_from_callbacks(callbacks, user, width, height, channels, 4);
        return stbi_load_from_callbacks(callbacks, user, width, height, channels, 4);
    });
    if (!pixels || !sameSize(description, picture)) return failureOf(memory, typeName);
    if (picture.wide)
        std::memcpy(picture.wideSamples.data(), pixels, picture.wideSamples.size() * 2);
    else
        std::memcpy(picture.samples.data(), pixels, picture.samples.size());
    picture.colour = description.channels >= 3;
    picture.mask = description.channels % 2 == 0;
    return {};
}

}  // namespace

Failure readByStb(const SourceFile& source, const char* typeName, Picture& picture) {
    StbMemory memory(workBytes);
    Stream stream(source);
    try {
        return readSamples(stream, memory, typeName, picture);
    } catch (const EndsEarly&) {
        return "the file ends early";
    }
}

}  // namespace vistel
