#include "verify/verify_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <new>

#include "odbstore/checksums.h"
#include "odbstore/layout_1.h"
#include "odbstore/reader.h"
#include "verify/damage.h"

namespace verify {

namespace {

using odbstore::Owner;
using odbstore::OwnerKind;
using odbstore::Reader;
using odbstore::SetKind;
using odbstore::StoredBlock;
using odbstore::StoredStep;

class Check {
 public:
  explicit Check(Verdict& verdict) : verdict_(verdict) {}

  // What there is to say of a file without damage.
  void concludeWith(State state, const std::string& text) {
    if (verdict_.state == State::damaged) return;
    verdict_.state = state;
    verdict_.findings.push_back(text);
  }

  // Runs `action`, which throws for what is wrong. One fault may be met on several ways.
  template <class Action>
  void guarded(Action&& action) {
    try {
      action();
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& error) {
      add(error.what());
    }
  }

  void add(const std::string& finding) {
    verdict_.state = State::damaged;
    std::vector<std::string>& findings = verdict_.findings;
    if (std::find(findings.begin(), findings.end(), finding) == findings.end()) findings.push_back(finding);
  }

 private:
  Verdict& verdict_;
};

void checkSets(const Reader& reader, const Owner& owner, Check& check) {
  for (const SetKind kind : {SetKind::element, SetKind::node}) {
    check.guarded([&] {
      for (const std::string& set : reader.sets(owner, kind)) {
        check.guarded([&] { reader.setMembers(owner, kind, set); });
      }
    });
  }
}

void checkModel(const Reader& reader, Check& check) {
  check.guarded(
      [&] { reader.name(), reader.title(), reader.producer(), reader.assemblyName(), reader.symmetryAxis(); });
  check.guarded([&] {
    for (const std::string& part : reader.parts()) checkSets(reader, {OwnerKind::part, part}, check);
  });
  check.guarded([&] {
    for (const odbstore::InstanceInfo& instance : reader.instances()) {
      checkSets(reader, {OwnerKind::instance, instance.name}, check);
      check.guarded([&] { reader.checkMesh(instance.name); });
    }
  });
  checkSets(reader, {}, check);
}

// Packed rows show their damage when they are unpacked.
void unpack(const StoredBlock& block, Check& check) {
  if (block.hasDirectRows()) return;
  std::vector<double> rows(static_cast<std::size_t>(block.rows() * block.width()));
  for (const int frame : block.frames()) {
    check.guarded([&] { block.read(frame, rows.data()); });
  }
}

void checkHistories(const StoredStep& step, Check& check) {
  for (const std::string& name : step.historyRegions()) {
    check.guarded([&] {
      for (const std::string& output : step.historyRegion(name).outputs) {
        check.guarded([&] { step.historySamples(name, output); });
      }
    });
  }
}

void checkSteps(const Reader& reader, bool unpacks, Check& check) {
  for (const std::string& name : reader.steps()) {
    check.guarded([&] {
      const std::shared_ptr<const StoredStep> step = reader.step(name);
      check.guarded([&] { checkHistories(*step, check); });
      for (const odbstore::StoredField& field : step->fields()) {
        for (const StoredBlock& block : field.blocks) {
          if (unpacks) unpack(block, check);
        }
      }
    });
  }
}

std::vector<int> framesOf(const Reader& reader, const BlockPlace& place) {
  try {
    const std::shared_ptr<const StoredStep> step = reader.step(place.step);
    for (const odbstore::StoredField& field : step->fields()) {
      if (field.name == place.field) return field.blocks.at(static_cast<std::size_t>(place.block)).frames();
    }
  } catch (const std::exception&) {
    // A list of frames or its neighbours are damaged as well, which is a finding of its own.
  }
  return {};
}

void checkSums(const Reader& reader, const odbstore::ChecksumPlace& place, Check& check, const std::string& path) {
  const odbstore::ChecksumReport report = odbstore::compareChecksums(path, place);
  if (report.tableIsDamaged) {
    return check.add(path + ": /checksums: is damaged, so nothing else can be compared with it");
  }
  if (report.damagedBlocks.empty()) return;
  const auto size = static_cast<std::int64_t>(std::filesystem::file_size(path));
  const auto frames = [&reader](const BlockPlace& block) { return framesOf(reader, block); };
  for (const std::string& text : describeDamage(report.damagedBlocks, place, size, reader.inventory(), frames)) {
    check.add(path + ": " + text);
  }
}

void checkDatabase(const Reader& reader, const std::string& path, Check& check) {
  bool hasChecksums = false;
  check.guarded([&] {
    const std::optional<odbstore::ChecksumPlace> sums = reader.checksums();
    hasChecksums = sums.has_value();
    if (sums) checkSums(reader, *sums, check, path);
  });
  for (const std::string& problem : reader.inventory().problems) check.add(problem);
  checkModel(reader, check);
  check.guarded([&] { checkSteps(reader, !hasChecksums, check); });
  if (hasChecksums) return;
  check.concludeWith(State::withoutChecksums, path + ": has no checksums: what its numbers were cannot be told");
}

}  // namespace

Verdict verifyFile(const std::string& path) {
  Verdict verdict{path, State::sound, {}};
  Check check(verdict);
  check.guarded([&] {
    if (const std::shared_ptr<const Reader> reader = Reader::openIfNewest(path)) {
      return checkDatabase(*reader, path, check);
    }
    odbstore::readLayout1(path);
    check.concludeWith(State::oldLayout,
                       path + ": has layout 1, which has no checksums: it can be read, but not verified");
  });
  return verdict;
}

}  // namespace verify
