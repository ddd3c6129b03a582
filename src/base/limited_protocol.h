// The protocol between limited_program.h and limited_work.h.
#pragma once

#include <cstddef>
#include <cstdint>

namespace base {

// Numbers of the open files that a limited program has.
inline constexpr int kLimitedPipe = 3;
inline constexpr int kLimitedFile = 4;

// Its arguments: these, as numbers, before those that are its own.
enum LimitedArgument : int { kParentArgument = 1, kMemoryArgument, kSecondsArgument, kFirstOwnArgument };

// The first byte of an answer says how the work ended. An error of a file is its object, a NUL and the reason.
enum class Ending : char { value = 'V', fileError = 'F', otherError = 'E', memory = 'M' };

// Before each answer to a request. A request has its length, 4 bytes, before it.
struct AnswerHead {
  std::uint64_t bytes = 0;
  Ending ending = Ending::value;
};

// A crash may send garbage; the last byte confirms that the answer is complete.
inline constexpr char kEndMark = '.';

}  // namespace base
