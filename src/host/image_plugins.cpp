#include "host/image_plugins.h"

#include <algorithm>
#include <sstream>

namespace vistel {

namespace {

constexpr ImageType table[] = {
#include "image_types.inc"
};

bool loaded = false;

std::span<const ImageType> plugins() {
    return loaded ? allImageTypes() : std::span<const ImageType>();
}

const ImageType* find(std::string_view name) {
    for (const ImageType& type : plugins())
        if (type.name == name) return &type;
    return nullptr;
}

}  // namespace

std::span<const ImageType> allImageTypes() { return table; }

std::string fileExtension(const std::string& path) {
    const size_t name = path.find_last_of("/\\:") + 1;
    const size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || dot < name) return {};
    std::string extension = path.substr(dot + 1);
    std::ranges::transform(extension, extension.begin(), lowerCase);
    return extension;
}

const ImageType* imageTypeOfExtension(const std::string& extension) {
    if (extension.empty()) return nullptr;
    for (const ImageType& type : table) {
        const std::string all = " " + std::string(type.extensions) + " ";
        if (all.find(" " + extension + " ") != std::string::npos) return &type;
    }
    return nullptr;
}

void loadAllPXFPlugins() { loaded = true; }

std::vector<Tstring> PXF_getPluginNames() {
    std::vector<Tstring> names;
    for (const ImageType& type : plugins()) names.emplace_back(type.name);
    return names;
}

Tstring PXF_getKeyFromPluginName(std::string_view name) {
    const ImageType* type = find(name);
    return type ? type->key : "";
}

Tstring PXF_getExtFromPluginName(std::string_view name) {
    const ImageType* type = find(name);
    if (!type) return {};
    const std::string_view extensions = type->extensions;
    return "." + std::string(extensions.substr(0, extensions.find(' ')));
}

bool PXF_isMultiFrameFormat(std::string_view name) {
    const ImageType* type = find(name);
    return type && type->multiFrame;
}

bool PXF_hasWriteSupport(std::string_view name) {
    const ImageType* type = find(name);
    return type && type->writes;
}

Tstring PXF_getOnlyExtensions() {
    Tstring patterns;
    for (const ImageType& type : plugins()) {
        std::istringstream extensions(type.reads ? type.extensions : "");
        for (std::string extension; extensions >> extension;) patterns += "*." + extension + ";";
    }
    return patterns;
}

}  // namespace vistel
