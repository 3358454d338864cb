// Walks a whole container and tells what it met, for comparing with one line of text.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "iff/iff_bytes.h"
#include "iff/iff_reader.h"

namespace vistel::test {

inline std::string idText(int32_t id) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(id >> shift & 0xFF);
    return text;
}

inline int id(const char (&text)[5]) { return iffId(text); }

// Chunk handlers that end in one way.
inline int ignore(IffReader&) { return iffBlockIgnored; }
inline int complete(IffReader&) { return iffParsingComplete; }
inline int parse(IffReader& group) { return group.parseGroup(); }

// The walk's diary: groups as "FOR4:CIMG(...)", chunks as "TBHD=body", the result behind a group
// that did not end well as "!-17".
struct Diary {
    std::string text;
    bool readBodies = true;

    void add(const std::string& word) {
        if (!text.empty() && text.back() != '(') text += ' ';
        text += word;
    }
};

inline int notePlainChunk(IffReader& chunks, Diary& diary) {
    std::string body;
    int result = iffOk;
    if (diary.readBodies && chunks.sizeKnown()) {
        body.resize(
            static_cast<size_t>(std::min(chunks.chunkBytesLeft(), chunks.streamBytesLeft())));
        result = chunks.readBytes(body.data(), body.size());
        if (body.size() < chunks.chunkSize()) result = iffIncomplete;
    }
    diary.add(idText(chunks.chunkId()) + "=" + body);
    return result;
}

inline int noteGroup(IffReader& group) {
    Diary& diary = *static_cast<Diary*>(group.user);
    diary.add(idText(group.chunkId()) + ":" + idText(group.groupType()) + "(");
    IffReader chunks;
    int result = group.enter(chunks);
    if (result == iffOk) {
        do {
            result = chunks.dispatch();
            if (result > 0) result = notePlainChunk(chunks, diary);
        } while (result == iffOk);
        chunks.leave();
    }
    if (result == iffEndOfGroup) result = iffOk;
    if (result != iffOk) diary.add("!" + std::to_string(result));
    diary.text += ")";
    return result;
}

constexpr IffHandlers noteEveryGroup = {noteGroup, noteGroup, noteGroup, noteGroup, {}};

// A temporary file with a context at its root.
struct Container {
    explicit Container(const Bytes& bytes, bool forceStream = false) : file(bytes) {
        root.user = &diary;
        root.handlers = noteEveryGroup;
        opened = root.open(file.open(), forceStream);
    }
    // Dispatches at the root until a non-zero result.
    int walk() {
        int result = opened;
        while (result == iffOk) result = root.dispatch();
        return result;
    }

    TemporaryFile file;
    Diary diary;
    IffReader root;
    int opened = iffOk;
};

// Enters the first group of the root.
struct Inside : Container {
    explicit Inside(const Bytes& bytes, bool forceStream = false) : Container(bytes, forceStream) {
        groupId = root.next();
        entered = groupId > 0 ? root.enter(group) : groupId;
    }
    IffReader group;
    int groupId = 0, entered = 0;
};

}  // namespace vistel::test
