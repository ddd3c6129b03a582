// Calls that are counted and fail when they are told to, for programs that are built with such calls:
//   KOLVEX_FAIL=7    the seventh call fails
//   KOLVEX_FAIL=7+   that one and all behind it
//   KOLVEX_COUNT=F   the number of calls is written to the file F when the process ends
// Counting begins with main(), which is called programMain() here: before it, while objects of libraries are made, a
// process can only end. Child processes count on.
#pragma once

#include <sys/mman.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

class CountedCalls {
 public:
  void begin() {
    if (const char* text = std::getenv("KOLVEX_FAIL")) {
      char* end = nullptr;
      which_ = std::strtoul(text, &end, 10);
      isForGood_ = *end == '+';
    }
    void* const shared = ::mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared != MAP_FAILED) count_ = new (shared) Count(0);
  }

  // Whether the call that is made now is to fail.
  bool isToFail() {
    if (count_ == nullptr) return false;
    const unsigned long number = ++*count_;
    return number == which_ || (isForGood_ && number > which_);
  }

  ~CountedCalls() {
    const char* path = std::getenv("KOLVEX_COUNT");
    std::FILE* file = path == nullptr || count_ == nullptr ? nullptr : std::fopen(path, "w");
    if (file == nullptr) return;
    std::fprintf(file, "%lu\n", count_->load());
    std::fclose(file);
  }

 private:
  using Count = std::atomic<unsigned long>;

  unsigned long which_ = 0;
  bool isForGood_ = false;
  Count* count_ = nullptr;
};
