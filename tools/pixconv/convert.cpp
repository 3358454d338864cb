#include "convert.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "codecs.h"
#include "host/image_plugins.h"
#include "host/output_file.h"
#include "memory_rule.h"
#include "platform/files.h"
#include "platform/temporary_file.h"
#include "without_exceptions.h"

namespace vistel {

namespace {

constexpr size_t startBytes = 64;
constexpr uint64_t mostCollectedBytes = uint64_t{4} << 30;

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lowerCase);
    return text;
}

const ImageType* typeOfKey(const std::string& key) {
    for (const ImageType& type : allImageTypes())
        if (key == type.key) return &type;
    return nullptr;
}

bool isNumber(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string systemError() {
    return errno != 0 ? std::strerror(errno) : "the system gives no reason";
}

Failure readFrom(FILE* file, const std::string& path, Picture& picture) {
    const SourceFile source{path, file, platform::streamStatus(file).size};
    Failure failure;
    const Codec* codec = codecForReading(source, failure);
    if (!codec) return failure;
    picture.mostBytes = justifiedBytes(codec->key, source.size);
    return codec->read(source, picture);
}

// A file with what a pipe gives, to its end: pictures are not read in one go.
Failure collect(FILE* in, FILE* file) {
    std::vector<char> room(size_t{1} << 16);
    uint64_t size = 0;
    while (const size_t part = std::fread(room.data(), 1, room.size(), in)) {
        size += part;
        if (size > mostCollectedBytes) return "there is no end of it: over 4 GB";
        errno = 0;
        if (std::fwrite(room.data(), 1, part, file) != part) return systemError();
    }
    errno = 0;
    if (std::fflush(file) != 0) return systemError();
    std::rewind(file);
    return {};
}

Failure readStandardInput(FILE* in, Picture& picture) {
    const bool regular = platform::streamStatus(in).kind == platform::StreamKind::regular;
    if (regular && platform::streamPosition(in) == 0) return readFrom(in, "", picture);
    errno = 0;
    const platform::FilePtr file(platform::openTemporaryFile());
    if (!file) return systemError();
    if (Failure failure = collect(in, file.get())) return failure;
    return readFrom(file.get(), "", picture);
}

Failure readPicture(const std::string& path, Picture& picture) {
    if (platform::fileExists(path) && !platform::isRegularFile(path))
        return "only regular files can be read, no folders, pipes or devices";
    errno = 0;
    const platform::FilePtr file(platform::openFile(path, "r"));
    if (!file) return systemError();
    return readFrom(file.get(), path, picture);
}

Failure writeTo(FILE* file, const Codec& codec, const Picture& picture, const std::string& path) {
    errno = 0;
    Failure failure = withoutExceptions([&] {
        return codec.write(picture, TargetFile{path, file});
    });
    errno = 0;
    if (!failure && (std::fflush(file) != 0 || std::ferror(file))) failure = systemError();
    if (std::fclose(file) != 0 && !failure) failure = systemError();
    return failure;
}

// Why a file could not be opened, by the error that it gave.
Failure whyNotOpened(const std::string& path) {
    Failure failure = systemError();
    if (platform::fileExists(path) || platform::followLinks(path)) return failure;
    if (errno == ELOOP) return "a symbolic link that leads in a circle";
    if (errno == ENOENT) return "a symbolic link to a file that is not there";
    return failure;
}

Failure writePicture(const Codec& codec, const Picture& picture, const std::string& path) {
    errno = 0;
    OutputFile output;
    FILE* file = output.open(path);
    if (!file) return whyNotOpened(path);
    Failure failure = writeTo(file, codec, picture, path);
    if (!failure && !output.finish()) failure = systemError();
    return failure;
}

void readToEnd(FILE* in) {
    if (platform::streamStatus(in).kind == platform::StreamKind::regular) return;
    std::vector<char> room(size_t{1} << 16);
    while (std::fread(room.data(), 1, room.size(), in) > 0) {
    }
}

}  // namespace

const Codec* codecForReading(const SourceFile& source, Failure& failure) {
    uint8_t start[startBytes];
    const size_t size = std::fread(start, 1, sizeof start, source.file);
    std::rewind(source.file);
    if (size == 0) {
        failure = "the file is empty";
        return nullptr;
    }
    const ImageType* named = imageTypeOfExtension(fileExtension(source.path));
    const Codec* byName = named ? codecOfKey(named->key) : nullptr;
    const auto recognises = [&](const Codec* codec) {
        return codec->read && codec->recognises && codec->recognises({start, size});
    };
    // Short marks are met by chance: of several types the one that the extension tells is right.
    if (byName && recognises(byName)) return byName;
    for (const Codec* codec : allCodecs())
        if (recognises(codec)) return codec;
    if (byName && byName->read && !byName->recognises) return byName;
    const auto isSound = [&](const Codec* codec) {
        return codec->isSound && codec->isSound({start, size}, source.size);
    };
    if (fileExtension(source.path).empty())
        for (const Codec* codec : allCodecs())
            if (isSound(codec)) return codec;
    failure = named ? std::string("not a picture of the type ") + named->name
                    : "not a picture of a known type";
    return nullptr;
}

const Codec* codecForWriting(const std::string& path, const std::string& key, Failure& failure) {
    const std::string extension = fileExtension(path);
    const ImageType* type = nullptr;
    if (!key.empty())
        type = typeOfKey(lowered(key));
    else
        type = isNumber(extension) ? typeOfKey("tavo") : imageTypeOfExtension(extension);
    if (!type) {
        failure = key.empty() ? "no type has the extension \"" + extension + "\""
                              : "no type has the key \"" + key + "\"";
        return nullptr;
    }
    const Codec* codec = codecOfKey(type->key);
    if (codec && codec->write) return codec;
    failure = std::string("files of the type ") + type->name + " cannot be written";
    return nullptr;
}

template <class Read>
static Failure frameOf(Read&& read, FILE* out) {
    Picture picture;
    Failure failure = withoutExceptions([&] { return read(picture); });
    const bool part = failure && picture.partIsThere();
    if (failure && !part) {
        if (!platform::isStandardStream(out)) std::fclose(out);
        return failure;
    }
    const Failure written = withoutExceptions(
        [&] { return writeFrame(picture, out, part ? FrameExtent::part : FrameExtent::whole); });
    return written || !part ? written : failure;
}

Failure toFrame(const std::string& path, FILE* out) {
    return frameOf([&](Picture& picture) { return readPicture(path, picture); }, out);
}

Failure toFrame(FILE* in, FILE* out) {
    return frameOf([&](Picture& picture) { return readStandardInput(in, picture); }, out);
}

Failure fromFrame(FILE* in, const std::string& path, const std::string& key) {
    Failure failure;
    const Codec* codec = codecForWriting(path, key, failure);
    if (!codec) return failure;
    Picture picture;
    failure = withoutExceptions([&] { return readFrame(in, picture); });
    if (failure) return failure;
    readToEnd(in);
    return writePicture(*codec, picture, path);
}

}  // namespace vistel
