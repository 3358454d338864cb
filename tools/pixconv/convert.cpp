#include "convert.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <vector>

#include "codecs.h"
#include "host/image_plugins.h"
#include "platform/files.h"

namespace vistel {

namespace {

constexpr size_t startBytes = 64;

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

// Without the dot, in lower case; empty when there is none.
std::string extensionOf(const std::string& path) {
    const size_t name = path.find_last_of("/\\:") + 1;
    const size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || dot < name) return {};
    return lowered(path.substr(dot + 1));
}

bool hasExtension(const ImageType& type, const std::string& extension) {
    const std::string all = " " + std::string(type.extensions) + " ";
    return !extension.empty() && all.find(" " + extension + " ") != std::string::npos;
}

const ImageType* typeOfExtension(const std::string& extension) {
    for (const ImageType& type : allImageTypes())
        if (hasExtension(type, extension)) return &type;
    return nullptr;
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

// Codecs may run out of memory anywhere.
template <class Step>
Failure withoutExceptions(Step&& step) {
    try {
        return step();
    } catch (const std::bad_alloc&) {
        return "there is not enough memory";
    } catch (const std::exception& problem) {
        return problem.what();
    }
}

Failure readPicture(const std::string& path, Picture& picture) {
    errno = 0;
    const platform::FilePtr file(platform::openFile(path, "r"));
    if (!file) return systemError();
    SourceFile source{path, file.get(), platform::streamStatus(file.get()).size};
    Failure failure;
    const Codec* codec = codecForReading(source, failure);
    return codec ? codec->read(source, picture) : failure;
}

// A device must not be removed.
void removeUnfinished(FILE* file, const std::string& path) {
    const bool regular = platform::streamStatus(file).kind == platform::StreamKind::regular;
    std::fclose(file);
    if (regular) std::remove(path.c_str());
}

Failure writePicture(const Codec& codec, const Picture& picture, const std::string& path) {
    errno = 0;
    FILE* file = platform::openFile(path, "w+");
    if (!file) return systemError();
    Failure failure = withoutExceptions([&] {
        return codec.write(picture, TargetFile{path, file});
    });
    errno = 0;
    if (!failure && (std::fflush(file) != 0 || std::ferror(file))) failure = systemError();
    if (failure) {
        removeUnfinished(file, path);
        return failure;
    }
    if (std::fclose(file) == 0) return {};
    failure = systemError();
    std::remove(path.c_str());
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
    const ImageType* named = typeOfExtension(extensionOf(source.path));
    const Codec* byName = named ? codecOfKey(named->key) : nullptr;
    const auto recognises = [&](const Codec* codec) {
        return codec->read && codec->recognises && codec->recognises({start, size});
    };
    // Short marks are met by chance: of several types the one that the extension tells is right.
    if (byName && recognises(byName)) return byName;
    for (const Codec* codec : allCodecs())
        if (recognises(codec)) return codec;
    if (byName && byName->read && !byName->recognises) return byName;
    failure = named ? std::string("not a picture of the type ") + named->name
                    : "not a picture of a known type";
    return nullptr;
}

const Codec* codecForWriting(const std::string& path, const std::string& key, Failure& failure) {
    const std::string extension = extensionOf(path);
    const ImageType* type = nullptr;
    if (!key.empty())
        type = typeOfKey(lowered(key));
    else
        type = isNumber(extension) ? typeOfKey("tavo") : typeOfExtension(extension);
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

Failure toFrame(const std::string& path, FILE* out) {
    Picture picture;
    Failure failure = withoutExceptions([&] { return readPicture(path, picture); });
    if (!failure) return withoutExceptions([&] { return writeFrame(picture, out); });
    if (!platform::isStandardStream(out)) std::fclose(out);
    return failure;
}

Failure fromFrame(FILE* in, const std::string& path, const std::string& key) {
    Failure failure;
    const Codec* codec = codecForWriting(path, key, failure);
    Picture picture;
    if (codec) failure = withoutExceptions([&] { return readFrame(in, picture); });
    readToEnd(in);
    return failure ? failure : writePicture(*codec, picture, path);
}

}  // namespace vistel
