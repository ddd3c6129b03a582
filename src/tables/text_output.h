// Text on its way into an open file.
#pragma once

#include <string>
#include <string_view>

namespace tables {

class TextOutput {
 public:
  // `name` is what errors call it. The file is not closed.
  TextOutput(int file, std::string name) : file_(file), name_(std::move(name)) {}
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  // Both throw base::FileError.
  void write(std::string_view text);
  void flush();

 private:
  int file_;
  std::string name_;
  std::string collected_;
};

}  // namespace tables
