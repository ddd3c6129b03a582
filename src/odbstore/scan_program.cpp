#include "odbstore/scan_program.h"

#include <cstring>

#include "base/limited_program.h"
#include "base/own_programs.h"
#include "odbstore/store_error.h"

// Where the program is, for other projects that link this library: the CMake package defines it.
extern "C" __attribute__((weak)) const char* const kolvexScanProgram;

namespace odbstore {

std::string scanProgramPath() {
  return &kolvexScanProgram != nullptr ? kolvexScanProgram : base::ownProgram("odbscan");
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
