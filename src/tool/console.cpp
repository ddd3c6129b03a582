#include "tool/console.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace tool {

void print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void complain(const std::string& line) { std::fputs((line + "\n").c_str(), stderr); }

void finishOutput() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return;
  throw std::system_error(errno, std::generic_category(), "standard output cannot be written");
}

}  // namespace tool
