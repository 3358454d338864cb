// Where frame files lie, and what the folders hold of them, told by their listing.
#pragma once

#include <vector>

#include "host/tstring.h"
#include "sequence/frame_name.h"
#include "sequence/sequence_state.h"

namespace vistel {

// A relative name as one that counts from the folder in which the file argument was given: the
// current folder follows the files that are opened. Absolute names, and all names without such a
// folder, stay as they are.
Tstring fromStartDirectory(const Tstring& startDirectory, const Tstring& name);

// Path of a frame file's name in one search directory.
Tstring frameFilePath(const Tstring& startDirectory, const Tstring& searchDirectory,
                      const Tstring& name);

// The files in searchDirectory whose names begin with the stem's base part, at most 4095 (the user
// is told when there are more).
std::vector<NumberedFile> listNumberedFiles(const Tstring& startDirectory,
                                            const Tstring& searchDirectory, const Tstring& stem);

// Numbers of the frames that the search directories may hold between the parts, each once, sorted.
// Numbers count however they are padded, names in capital or small letters: not each is the number
// of a file that can be opened, but no other is.
std::vector<int> numbersBetween(const FramePlaces& places, const NameParts& parts);

// Whether one of the search directories holds the name (file or folder).
bool existsInPlaces(const FramePlaces& places, const Tstring& name);

// The bare names in the folder of a name, in one search directory.
std::vector<std::string> listFolderOf(const Tstring& startDirectory, const Tstring& searchDirectory,
                                      const Tstring& name);

}  // namespace vistel
