// Builds container files in memory, byte by byte, and puts them into temporary files.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"

namespace vistel::test {

// A growing byte string; every function appends and returns the builder.
class Bytes {
 public:
    Bytes() = default;
    Bytes(std::string_view text) { add(text); }
    Bytes(const char* text) { add(std::string_view(text)); }

    Bytes& u8(unsigned value) {
        data.push_back(static_cast<uint8_t>(value));
        return *this;
    }
    Bytes& u16(unsigned value) { return u8(value >> 8).u8(value); }
    Bytes& u32(uint32_t value) { return u16(value >> 16).u16(value & 0xFFFF); }
    Bytes& add(std::string_view text) {
        data.insert(data.end(), text.begin(), text.end());
        return *this;
    }
    Bytes& add(const char* text) { return add(std::string_view(text)); }
    Bytes& add(const Bytes& other) {
        data.insert(data.end(), other.data.begin(), other.data.end());
        return *this;
    }
    Bytes& fill(size_t count, uint8_t value = 0) {
        for (size_t i = 0; i < count; ++i) data.push_back(value);
        return *this;
    }

    // Header with any size, nothing else.
    Bytes& header(std::string_view id, uint32_t size) { return add(id).u32(size); }
    // A chunk with its right size, padded to `alignment`.
    Bytes& chunk(std::string_view id, const Bytes& body, size_t alignment = 4) {
        header(id, static_cast<uint32_t>(body.size())).add(body);
        return fill((alignment - body.size() % alignment) % alignment);
    }
    // A group of known size.
    Bytes& group(std::string_view kind, std::string_view type, const Bytes& body) {
        return header(kind, static_cast<uint32_t>(body.size() + 4)).add(type).add(body);
    }
    // A group of unknown size closed by "GEND".
    Bytes& openGroup(std::string_view kind, std::string_view type, const Bytes& body,
                     uint32_t size = 0x80000000, uint32_t endSize = 0x80000000) {
        return header(kind, size).add(type).add(body).header("GEND", endSize);
    }
    // A chunk that runs to an end marker; the body must be padded by the caller.
    Bytes& streamedChunk(std::string_view id, const Bytes& body) {
        return header(id, 0x80000002).add(body).header("EOVC", 0x80000000);
    }

    size_t size() const { return data.size(); }
    Bytes cut(size_t count) const {
        Bytes part;
        part.data.assign(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(count));
        return part;
    }
    bool operator==(const Bytes& other) const { return data == other.data; }

    std::vector<uint8_t> data;
};

// A file in the system's temporary folder, removed at the end of its life.
class TemporaryFile {
 public:
    explicit TemporaryFile(const std::string& ending = ".iff") {
        static std::random_device random;
        const std::string bare =
            "vistel_test_" + std::to_string(random()) + "_" + std::to_string(random()) + ending;
        const auto text = (std::filesystem::temp_directory_path() / bare).u8string();
        name_.assign(text.begin(), text.end());
    }
    explicit TemporaryFile(const Bytes& content) : TemporaryFile() { write(content); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        stream_.reset();
        std::error_code ignored;
        std::filesystem::remove(path(), ignored);
    }

    const std::string& name() const { return name_; }
    std::filesystem::path path() const {
        return std::filesystem::path(std::u8string(name_.begin(), name_.end()));
    }
    void write(const Bytes& content) const {
        std::ofstream file(path(), std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(content.data.data()),
                   static_cast<std::streamsize>(content.size()));
    }
    void append(const Bytes& content) const {
        std::ofstream file(path(), std::ios::binary | std::ios::app);
        file.write(reinterpret_cast<const char*>(content.data.data()),
                   static_cast<std::streamsize>(content.size()));
    }
    Bytes read() const {
        std::ifstream file(path(), std::ios::binary);
        Bytes bytes;
        file.seekg(0, std::ios::end);
        bytes.data.resize(static_cast<size_t>(file.tellg()));
        file.seekg(0);
        file.read(reinterpret_cast<char*>(bytes.data.data()), std::ssize(bytes.data));
        return bytes;
    }
    // Opens the file for reading; this object keeps and closes the stream.
    FILE* open() {
        stream_.reset(platform::openFile(name_, "r"));
        return stream_.get();
    }

 private:
    std::string name_;
    platform::FilePtr stream_;
};

}  // namespace vistel::test
