#include "batch/run/memory_use.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <span>
#include <string>

#include "base/descriptor.h"

namespace batch {

namespace {

// Files of /proc say that they are empty, so they are read until they end.
std::string contentOf(const std::string& path) {
  const base::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::array<char, 4096> text;
  const auto got = file ? base::readAt(file.get(), 0, std::as_writable_bytes(std::span(text))) : std::nullopt;
  return std::string(text.data(), got.value_or(0));
}

std::uint64_t ownMemory(const std::string& process) {
  const std::string pages = contentOf("/proc/" + process + "/statm");
  const std::size_t resident = pages.find(' ');
  if (resident == std::string::npos) return 0;
  static const auto pageSize = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  return std::strtoull(pages.c_str() + resident, nullptr, 10) * pageSize;
}

std::uint64_t memoryOf(const std::string& process, int depth) {
  constexpr int kDeepest = 16;
  std::uint64_t bytes = ownMemory(process);
  if (depth == kDeepest) return bytes;
  const std::string children = contentOf("/proc/" + process + "/task/" + process + "/children");
  for (std::size_t begin = 0; begin < children.size();) {
    const std::size_t end = children.find(' ', begin);
    if (end == std::string::npos) break;
    bytes += memoryOf(children.substr(begin, end - begin), depth + 1);
    begin = end + 1;
  }
  return bytes;
}

}  // namespace

std::uint64_t residentMemory(pid_t process) { return memoryOf(std::to_string(process), 0); }

}  // namespace batch
