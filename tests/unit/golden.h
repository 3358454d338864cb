// Comparing a text with a file of the tree. On a mismatch the new text is written beside it as
// .new.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vistel {

inline void expectGolden(const std::string& text, const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string stored{std::istreambuf_iterator<char>(stream), {}};
    if (stored == text) return;
    std::filesystem::path fresh = file;
    fresh += ".new";
    std::ofstream(fresh, std::ios::binary) << text;
    ADD_FAILURE() << file.string() << " differs from what the program says; see " << fresh.string();
}

}  // namespace vistel
