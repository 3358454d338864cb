// The step from allocations that throw to result codes.
#pragma once

#include <new>
#include <utility>

#include "iff/result_codes.h"

namespace vistel {

// The result of `step`, iffNoMemory when an allocation in it failed.
template <class Step>
[[nodiscard]] int withMemory(Step&& step) {
    try {
        return std::forward<Step>(step)();
    } catch (const std::bad_alloc&) {
        return iffNoMemory;
    }
}

}  // namespace vistel
