// What the fuzz targets share.
//
// A target is one function that takes any bytes and must neither crash nor hang; ImportError and StoreError are how
// readers refuse.
// Built with Clang's libFuzzer it is a fuzzer; with any compiler, and replay.cpp, a program that runs the kept inputs
// through it.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// The bytes as a file in memory, under a path that readers can open.
class InputFile {
 public:
  InputFile(const std::uint8_t* data, std::size_t size) : file_(::memfd_create("input", MFD_CLOEXEC)) {
    if (file_ < 0 || ::write(file_, data, size) != static_cast<ssize_t>(size)) std::abort();
  }
  ~InputFile() { ::close(file_); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  int descriptor() const { return file_; }
  std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  int file_;
};

// Ends the process where a promise is broken, in a way that the fuzzer notices.
inline void require(bool holds) {
  if (!holds) std::abort();
}
