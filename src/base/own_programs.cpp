#include "base/own_programs.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace base {

std::string ownProgram(const std::string& name) {
  std::error_code failure;
  const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe", failure);
  if (!failure) {
    const std::string beside = (own.parent_path() / name).string();
    if (::access(beside.c_str(), X_OK) == 0) return beside;
  }
  return std::string(KOLVEX_PROGRAMS) + "/" + name;
}

}  // namespace base
