// Catalogs of databases, and all that can be read through one that is accepted. The file around it holds small
// integers, so that labels and indices of rows are often good ones.
#include <memory>

#include "fuzz_input.h"
#include "odbstore/catalog_check.h"
#include "odbstore/catalog_lines.h"
#include "odbstore/database_file.h"
#include "odbstore/reader.h"

namespace {

using namespace odbstore;

constexpr std::int64_t kFileBytes = 1 << 17;
// So many numbers of rows are read of a catalog; the file is small, but packed rows need not be.
constexpr std::int64_t kMostNumbers = 1 << 22;

const InputFile& surroundings() {
  static const InputFile file = [] {
    std::vector<std::int32_t> numbers(kFileBytes / sizeof(std::int32_t));
    for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<std::int32_t>(i % 8);
    return InputFile(reinterpret_cast<const std::uint8_t*>(numbers.data()), kFileBytes);
  }();
  return file;
}

// What is refused only when it is read.
template <class Read>
void attempt(Read&& read) {
  try {
    read();
  } catch (const StoreError&) {
    return;
  }
}

void readSets(const Reader& reader, const Owner& owner) {
  for (const SetKind kind : {SetKind::element, SetKind::node}) {
    for (const std::string& set : reader.sets(owner, kind)) {
      attempt([&] { reader.setMembers(owner, kind, set); });
    }
  }
}

void readRows(const StoredBlock& block, std::int64_t& left) {
  const StoredLocation& location = *block.location();
  attempt([&] { require(location.nodeLabels().empty() || std::ssize(location.nodeLabels()) == block.rows()); });
  attempt([&] { require(location.elementLabels().empty() || std::ssize(location.elementLabels()) == block.rows()); });
  const std::int64_t numbers = block.rows() * block.width();
  for (const int frame : block.frames()) {
    if (numbers > left) return;
    left -= numbers;
    std::vector<double> rows(static_cast<std::size_t>(numbers));
    attempt([&] { block.read(frame, rows.data()); });
    std::vector<float> narrow(static_cast<std::size_t>(block.storedRows() * block.width()));
    attempt([&] { block.readStored(frame, narrow.data()); });
  }
}

void readStep(const StoredStep& step, std::int64_t& left) {
  step.frames();
  for (const StoredField& field : step.fields()) {
    for (const int frame : field.frames()) require(field.infoIn(frame) != nullptr);
    for (const StoredBlock& block : field.blocks) readRows(block, left);
  }
  for (const std::string& region : step.historyRegions()) {
    for (const std::string& output : step.historyRegion(region).outputs) {
      attempt([&] {
        const HistorySamples samples = step.historySamples(region, output);
        require(std::ssize(samples.numbers) == samples.samples * samples.width);
      });
    }
  }
}

void readAll(Catalog catalog) {
  base::Descriptor file(::dup(surroundings().descriptor()));
  const auto database =
      std::make_shared<const DatabaseFile>("job.odb", std::move(file), kFileBytes, std::move(catalog), true);
  require(!linesOf(database->catalog()).empty());
  const Reader reader(database);
  readSets(reader, {});
  for (const std::string& part : reader.parts()) readSets(reader, {OwnerKind::part, part});
  for (const InstanceInfo& instance : reader.instances()) {
    readSets(reader, {OwnerKind::instance, instance.name});
    attempt([&] { reader.mesh(instance.name); });
  }
  std::int64_t left = kMostNumbers;
  for (const std::string& step : reader.steps()) readStep(*reader.step(step), left);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto* const bytes = reinterpret_cast<const std::byte*>(data);
  try {
    Catalog catalog({bytes, bytes + size}, "job.odb", kFileBytes);
    // `kolvex verify` compares catalogs whose content does not fit, too.
    linesOf(catalog);
    checkContent(catalog, [](const std::string& object, const std::string& reason) {
      throw StoreError("job.odb", object, reason);
    });
    readAll(std::move(catalog));
  } catch (const StoreError&) {
    return 0;
  }
  return 0;
}
