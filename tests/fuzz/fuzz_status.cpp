// Status files.
#include "fuzz_input.h"
#include "importers/calculix/steps/step_times.h"
#include "importers/input/diagnostics.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const InputFile file(data, size);
  try {
    for (const auto& [place, times] : importers::calculix::readStepTimes(file.path())) require(!times.empty());
  } catch (const importers::ImportError&) {
    return 0;
  }
  return 0;
}
