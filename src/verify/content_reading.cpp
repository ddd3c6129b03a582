#include "verify/content_reading.h"

#include "odbstore/location_table.h"
#include "odbstore/reader.h"

namespace verify {

namespace {

using odbstore::Owner;
using odbstore::OwnerKind;
using odbstore::Reader;
using odbstore::SetKind;
using odbstore::StoredBlock;
using odbstore::StoredStep;

void readSets(const Reader& reader, const Owner& owner, Findings& findings) {
  for (const SetKind kind : {SetKind::element, SetKind::node}) {
    for (const std::string& set : reader.sets(owner, kind)) {
      findings.guarded([&] { reader.setMembers(owner, kind, set); });
    }
  }
}

void readModel(const Reader& reader, Findings& findings) {
  for (const std::string& part : reader.parts()) readSets(reader, {OwnerKind::part, part}, findings);
  for (const odbstore::InstanceInfo& instance : reader.instances()) {
    readSets(reader, {OwnerKind::instance, instance.name}, findings);
    findings.guarded([&] { reader.mesh(instance.name); });
  }
  readSets(reader, {}, findings);
}

void readLocations(const std::shared_ptr<const odbstore::DatabaseFile>& file, Findings& findings) {
  const std::size_t count = file->catalog().columns().locations()->id()->size();
  for (std::size_t i = 0; i < count; ++i) {
    // One at a time, so that no more than its labels are in memory.
    const odbstore::StoredLocation location(file, i);
    findings.guarded([&] { static_cast<void>(location.nodeLabels()); });
    findings.guarded([&] { static_cast<void>(location.elementLabels()); });
    findings.guarded([&] { static_cast<void>(location.integrationPoints()); });
    findings.guarded([&] { static_cast<void>(location.rowOf()); });
  }
}

// Packed rows show their damage when they are unpacked.
void unpack(const StoredBlock& block, Findings& findings) {
  if (block.hasDirectRows()) return;
  std::vector<double> rows(static_cast<std::size_t>(block.storedRows() * block.width()));
  for (const int frame : block.frames()) {
    findings.guarded([&] { block.readStored(frame, rows.data()); });
  }
}

void readStep(const StoredStep& step, Findings& findings) {
  for (const std::string& region : step.historyRegions()) {
    for (const std::string& output : step.historyRegion(region).outputs) {
      findings.guarded([&] { step.historySamples(region, output); });
    }
  }
  for (const odbstore::StoredField& field : step.fields()) {
    for (const StoredBlock& block : field.blocks) unpack(block, findings);
  }
}

}  // namespace

void readContent(const std::shared_ptr<const odbstore::DatabaseFile>& file, Findings& findings) {
  const Reader reader(file);
  readModel(reader, findings);
  readLocations(file, findings);
  for (const std::string& step : reader.steps()) readStep(*reader.step(step), findings);
}

}  // namespace verify
