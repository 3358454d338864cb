// A source that is opened as the program opens it, with what was printed meanwhile.
#pragma once

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "sequence/image_source.h"
#include "sequence_fixture.h"

namespace vistel {

// Codes and red values of frames.
using Results = std::vector<std::pair<int, int>>;

class SourceTest : public SequenceTest {
 protected:
    void SetUp() override {
        SequenceTest::SetUp();
        setRange(1, 1, 1);
        state_.animation = 0;
    }
    // Opens a source that nobody has opened before: the code.
    int open(const Tstring& name) {
        state_.sourceOpened = 0;
        state_.oneFileStream = {};
        frame_ = FrameStore{};
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int result = openImageSource(state_, name, terms_, false, frame_);
        errors_ = testing::internal::GetCapturedStderr();
        output_ = testing::internal::GetCapturedStdout();
        return result;
    }
    // Red value of the picture that the opening brought; -1 without one.
    int red() const { return redOf(frame_); }

    // Frames of the source that is open, read again one after the other.
    Results readAgain(std::initializer_list<int> numbers) {
        Results results;
        for (const int number : numbers) {
            FrameStore frame;
            last_ = readFrame(state_, number, terms_, frame);
            results.emplace_back(last_.code, redOf(frame));
        }
        return results;
    }
    static std::string notFound(const char* pattern, const char* tried, int error) {
        return formatMessage(Message::rVTAnimationNotFound,
                             {pattern, tried, std::strerror(error)}) +
               "\n";
    }
    // The command that prints a file.
    Tstring printing(const std::string& file) {
        const std::string program = childProgram(ChildRole::printFile);
        return "pipe:" + platform::quotedCommand(program, file, "stdout");
    }

    FrameStore frame_;
    FrameRead last_;  // of the frames read again
    std::string errors_, output_;
};

}  // namespace vistel
