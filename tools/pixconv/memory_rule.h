// How much memory a file may take while it is read: what its size justifies.
//
// A file of a few kilobytes may promise a picture of a gigabyte. Each type packs only so tightly,
// though: 64 MB may be taken for any file, as small as it may be, and beyond that so many bytes for
// each byte of the file as its type can possibly stand for. A picture that wants more is refused
// before memory is taken. The rule holds for the picture, and for what a library takes at once
// besides it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "picture.h"

namespace vistel {

// Never more than mostPictureBytes; `key` is that of the file's type.
uint64_t justifiedBytes(std::string_view key, uint64_t fileBytes);

// Whether the type has a row in the rule's table: a test sees to it that all have.
bool hasMemoryRule(std::string_view key);

// For a picture (or a part of it) that takes more than that.
Failure notJustified(uint64_t bytes);

}  // namespace vistel
