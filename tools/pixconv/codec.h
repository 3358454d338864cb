// One file type of the converter: how it is recognised, read and written. Every type has one file
// (png.cpp, sgi.cpp ...) that defines its codec; codecs.cpp lists them.
#pragma once

#include <cstdio>
#include <span>
#include <string>

#include "picture.h"

namespace vistel {

struct SourceFile {
    std::string path;   // UTF-8
    FILE* file;         // open for binary reading, at the start; not closed by the codec
    uint64_t size = 0;  // bytes
};

struct TargetFile {
    std::string path;
    FILE* file;  // open for binary writing (and reading back); not closed by the codec
};

struct Codec {
    const char* key;  // of the image type table
    // Whether a file that begins with these bytes (up to 64, fewer in a shorter file) is of this
    // type. Null: nothing at the start tells, the extension does.
    bool (*recognises)(std::span<const uint8_t> start);
    // Fills the picture from the first image of the file. Null: the type is not read.
    Failure (*read)(const SourceFile& source, Picture& picture);
    // Null: the type is not written. What the type cannot hold (mask, depth, 16 bits) is left out.
    Failure (*write)(const Picture& picture, const TargetFile& target);
    // Of a type that nothing at the start tells: whether a file of this size without any extension
    // that begins so is one all the same. Null: only the extension tells.
    bool (*isSound)(std::span<const uint8_t> start, uint64_t size) = nullptr;
};

}  // namespace vistel
