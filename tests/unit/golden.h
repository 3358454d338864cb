// Files of the tree, and comparing a text with one: on a mismatch the new text is written beside it
// as .new.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vistel {

// A file of the tree that is built, by its path in it. The tree's own path is compiled into
// unit/main.cpp alone, so that other trees can share the objects of everything else.
std::filesystem::path fileOfTree(const std::string& path);

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
