// Codecs and their libraries may run out of memory anywhere, and some throw what they find wrong.
#pragma once

#include <exception>
#include <new>
#include <string>

#include "picture.h"

namespace vistel {

// The step's own failure, or one for the exception that it ended with: explain(text) for any but
// the lack of memory.
template <class Step, class Explain>
Failure withoutExceptions(Step&& step, Explain&& explain) {
    try {
        return step();
    } catch (const std::bad_alloc&) {
        return "there is not enough memory";
    } catch (const std::exception& problem) {
        return explain(std::string(problem.what()));
    }
}

template <class Step>
Failure withoutExceptions(Step&& step) {
    return withoutExceptions(step, [](const std::string& text) { return text; });
}

}  // namespace vistel
