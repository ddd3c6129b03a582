#include "odbstore/scan_program.h"

#include <unistd.h>

#include <climits>
#include <cstring>

#include "base/limited_program.h"
#include "odbstore/store_error.h"

// Where the program is, for other projects that link this library: the CMake package defines it.
extern "C" __attribute__((weak)) const char* const kolvexScanProgram;

namespace odbstore {

namespace {

constexpr const char* kProgram = "odbscan";

}  // namespace

std::string scanProgramPath() {
  if (&kolvexScanProgram != nullptr) return kolvexScanProgram;
  std::string own(PATH_MAX, '\0');
  const ssize_t length = ::readlink("/proc/self/exe", own.data(), own.size());
  if (length > 0) {
    own.resize(static_cast<std::size_t>(length));
    const std::string beside = own.substr(0, own.rfind('/') + 1) + kProgram;
    if (::access(beside.c_str(), X_OK) == 0) return beside;
  }
  return std::string(KOLVEX_PROGRAMS) + "/" + kProgram;
}

std::optional<Catalog> scanCatalog(int file, const std::string& name, std::int64_t size) {
  const std::string answer = base::runLimited(name, {scanProgramPath(), {"catalog"}, file}, base::limitsFor(size));
  if (answer.starts_with(kOlderLayout)) return std::nullopt;
  if (!answer.starts_with(kScanned)) throw StoreError(name, "", "reading it produced no catalog");
  std::vector<std::byte> bytes(answer.size() - 1);
  std::memcpy(bytes.data(), answer.data() + 1, bytes.size());
  return Catalog(std::move(bytes), name, size);
}

}  // namespace odbstore
