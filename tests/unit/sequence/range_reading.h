// A range of frames, read one after the other while the next ones are read ahead.
#pragma once

#include <string>
#include <vector>

#include "sequence/frame_reader.h"
#include "sequence_fixture.h"

namespace vistel {

struct RangeRead {
    std::vector<std::string> lines;  // what each frame brought: number, code, red, name, reason
    size_t ahead = 0;                // frames that had been read when they were asked for
};

inline RangeRead readRange(SequenceState& state, const FrameRange& range, int threads) {
    RangeRead result;
    ReadAhead ahead(threads, state.converted);
    ReadTerms terms;
    terms.ahead = &ahead;
    for (int number = range.start; number <= range.end; number += range.step) {
        const int next[] = {number, number + range.step, number + 2 * range.step};
        wantFrames(state, next, terms.fit, ahead);
        FrameStore frame;
        const FrameRead read = readFrame(state, number, terms, frame);
        result.lines.push_back(std::to_string(number) + ": " + std::to_string(read.code) + " red " +
                               std::to_string(redOf(frame)) + " " + read.name + " " + read.reason);
    }
    result.ahead = ahead.taken();
    return result;
}

}  // namespace vistel
