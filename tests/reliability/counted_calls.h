// Calls that are counted and fail when they are told to, for programs that are built with such calls:
//   KOLVEX_COUNT=F   the number of calls is in the file F, where the programs that this one starts count on
//   KOLVEX_FAIL=7    the seventh call fails
//   KOLVEX_FAIL=7+   that one and all behind it
// Counting begins with main(), which is called programMain() here: before it, while objects of libraries are made, a
// process can only end.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

class CountedCalls {
 public:
  void begin() {
    if (const char* text = std::getenv("KOLVEX_FAIL")) {
      char* end = nullptr;
      which_ = std::strtoul(text, &end, 10);
      isForGood_ = *end == '+';
    }
    const char* const path = std::getenv("KOLVEX_COUNT");
    if (path == nullptr) return;
    const int file = ::open(path, O_RDWR | O_CLOEXEC);
    void* const shared = ::mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    if (shared != MAP_FAILED) count_ = static_cast<Count*>(shared);
  }

  // Whether the call that is made now is to fail.
  bool isToFail() {
    if (count_ == nullptr) return false;
    const unsigned long number = ++*count_;
    return number == which_ || (isForGood_ && number > which_);
  }

 private:
  using Count = std::atomic<unsigned long>;

  unsigned long which_ = 0;
  bool isForGood_ = false;
  Count* count_ = nullptr;  // the bytes of the file, zero at first
};
