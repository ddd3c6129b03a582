// How much memory a program and all that it has started take.
#pragma once

#include <sys/types.h>

#include <cstdint>

namespace batch {

// Bytes that are resident, of the process and its descendants; what they share counts for each. 0 if they have
// ended.
std::uint64_t residentMemory(pid_t process);

}  // namespace batch
