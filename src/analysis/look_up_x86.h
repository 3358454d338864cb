// The look-up loops of the vector kernels.
#pragma once

#include "analysis/view_kernels.h"

namespace vistel {

void lookUpAvx2(const ByteTables& tables, unsigned planes, const uint32_t* stored, size_t pixels,
                uint32_t* display);
void lookUpVbmi(const ByteTables& tables, unsigned planes, const uint32_t* stored, size_t pixels,
                uint32_t* display);

}  // namespace vistel
