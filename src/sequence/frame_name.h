// How the name of a frame file is built from a pattern and a number, and how numbers are read from
// names. Pure functions: no state, no files. A name is never used as a printf format, so a percent
// sign in it is an ordinary character.
//
// A pattern is a name with one run of "#" or "@" where the number goes, or a stem, after which a
// dot and the number come.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "host/tstring.h"
#include "sequence/sequence_state.h"

namespace vistel {

// The number as "%0*d" writes it: the sign counts as one of the digits. A width below 1 is no
// padding, one above `widestNumber` counts as that.
inline constexpr int widestNumber = 65536;
Tstring paddedNumber(int number, int width);

// Width that the at signs of a name stand for: from the first to the last, both counted; 0 without.
int atSignWidth(const Tstring& name);

struct NumberStyle {
    int padWidth = 0;     // digits; 0 unknown
    bool padded = false;  // a stem's number is padded, to four digits when padWidth is 0
};

// Name of a frame. "#" (four digits when padWidth is 0) goes before "@" (as wide as its run when
// padWidth is below 1); the number stands for all from the first to the last mark.
Tstring numberedName(const Tstring& pattern, int number, const NumberStyle& style);

// The same when only marks of the base name count and those of folders are ordinary characters
// ("/home/ann@studio/shot.#.iff"). None when the folders have no marks, as it is the same name
// then.
std::optional<Tstring> numberedNameInFolder(const Tstring& pattern, int number,
                                            const NumberStyle& style);

// The name between these parts. The number is padded as that of a stem.
Tstring nameOfParts(const NameParts& parts, int number, const NumberStyle& style);

// What stands around the number in the names that numberedName and numberedNameInFolder build.
std::vector<NameParts> partsOfPattern(const Tstring& pattern);

// "stem.7": the name that is tried for frames whose first one is missing.
Tstring unpaddedName(const Tstring& stem, int number);

// Name with the last run of "#" replaced by the number; empty without "#".
Tstring hashReplaced(const Tstring& pattern, int number, int padWidth);

// "pipe:<command>": the image comes from a command.
inline constexpr std::string_view commandPrefix = "pipe:";
bool namesCommand(const Tstring& name);

// Number of the k-th frame after the start of a range; k = -1 is the last one. The frames go down
// when the end is at least 1 and below the start. None outside the range (an end below 1 is no
// bound) and outside the int range.
std::optional<int> frameNumberAt(const FrameRange& range, int k);

// The name of one picked frame, taken apart at its last run of digits.
struct PickedName {
    Tstring before, after;  // folder and prefix; suffix
    int number = 0;         // a minus sign before the digits belongs to it
    int padWidth = 1;       // characters of the number when its first digit is 0, else 1
};
// None without a digit in the base name, and none for a number beyond 32 bits.
std::optional<PickedName> splitPickedName(const Tstring& name);

// Position of the base name: behind the last slash or backslash.
size_t baseNameStart(const Tstring& name);

// A stem's folder (empty: none; the separator is kept where the folder is a root) and base part.
struct StemParts {
    Tstring folder, base;
};
StemParts splitStem(const Tstring& stem);

// A file that belongs to a stem: its name begins with the base part. The number is what follows,
// read as atoi reads; none for other files.
struct NumberedFile {
    int number = 0;
    int zeroWidth = 0;  // count of digits there when the first is 0, else 0
    Tstring written;    // the number as it stands there; empty: none does, and 0 is read
    Tstring after;      // what follows it
};
std::optional<NumberedFile> readNumberedFile(const Tstring& fileName, const Tstring& base);

}  // namespace vistel
