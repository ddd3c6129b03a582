// Result files, ASCII and binary.
#include "fuzz_input.h"
#include "importers/calculix/frd/field_mapping.h"
#include "importers/calculix/frd/frd_reader.h"
#include "importers/input/diagnostics.h"

namespace {

using namespace importers::calculix;

void check(const FrdNodes& nodes) { require(nodes.coordinates.size() == 3 * nodes.labels.size()); }

void check(const FrdElements& elements) {
  for (const FrdElementGroup& group : elements.groups) {
    require(group.connectivity.size() == group.labels.size() * static_cast<std::size_t>(group.nodesPerElement));
  }
}

void check(const FrdResult& result) {
  require(result.values.size() == result.labels.size() * result.components.size());
  for (const MappedField& field : mapResult(result)) {
    for (const int column : field.columns) {
      require(column >= 0 && static_cast<std::size_t>(column) < result.components.size());
    }
  }
}

void readAll(const std::string& path, const ResultFilter& filter) {
  try {
    FrdReader reader(path);
    while (const std::optional<FrdBlock> block = reader.next(filter)) {
      std::visit([](const auto& content) { check(content); }, *block);
    }
  } catch (const importers::ImportError&) {
    return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const InputFile file(data, size);
  readAll(file.path(), {});
  readAll(file.path(), [](const FrdResult&) { return false; });
  return 0;
}
