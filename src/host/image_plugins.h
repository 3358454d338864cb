// The image plug-in table: the file types that the image converter reads and writes. The table is
// the converter's own (resources/image_types.txt), so that the dialogs offer what the converter can
// do without this program linking any image library.
//
// A type is named by its plug-in name, which users read ("Targa"); its key ("tga") is what the
// converter is told. Questions about a name that is not there give an empty text or false.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/tstring.h"

namespace vistel {

// The converter's program, beside this one or along the search path.
inline constexpr const char* imageConverter = "pixconv";

struct ImageType {
    const char* key;
    const char* name;
    const char* extensions;  // separated by blanks, without dots; the first is the written one
    bool reads, writes;
    bool multiFrame;  // a file may hold several pictures
};

// The whole table, in the order of the dialogs.
std::span<const ImageType> allImageTypes();

// What the last dot of a file's name is followed by, in lower case; empty without one.
std::string fileExtension(const std::string& path);
// The type that files of this extension have; null for an unknown one.
const ImageType* imageTypeOfExtension(const std::string& extension);

// Makes the table known to the functions below; until then there are no plug-ins.
void loadAllPXFPlugins();

std::vector<Tstring> PXF_getPluginNames();
Tstring PXF_getKeyFromPluginName(std::string_view name);
// ".tga": the extension that a written file gets.
Tstring PXF_getExtFromPluginName(std::string_view name);
bool PXF_isMultiFrameFormat(std::string_view name);
bool PXF_hasWriteSupport(std::string_view name);

// "*.iff;*.png;*.jpg;*.jpeg;": the file-dialog pattern of every extension that can be read, in a
// form to which further patterns can be appended. Empty without plug-ins.
Tstring PXF_getOnlyExtensions();

}  // namespace vistel
