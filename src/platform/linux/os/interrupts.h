// How an interrupt wakes a program that waits for something else.
#pragma once

namespace vistel::platform {

// A descriptor that becomes readable, and stays so, when an interrupt was caught; -1 before
// catchInterrupts.
int interruptDescriptor();

}  // namespace vistel::platform
