// The records of one field output of one frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "inspect/record_endings.h"
#include "inspect/set_rows.h"
#include "odbstore/stored_field.h"

namespace inspect {

// What decides over the records of a field in a frame, and the records themselves. Most frames of a step have the same.
class FieldShape {
 public:
  // The field as it is in `frame`, in which it exists; what `rows` knows of its locations is used as long as this.
  FieldShape(const odbstore::StoredField& field, int frame, const ExtractionSwitches& switches, SetRows& rows);

  // Whether the field looks the same in `frame` as in the one that this was made of.
  bool fits(const odbstore::StoredField& field, int frame) const;

  // Empty where the field is not taken.
  const std::vector<Ending>& ofWholeModel() const { return ofWholeModel_; }

  // Over a set. Empty where the field is not taken, sets are not visited, or the set has no rows of it.
  const std::vector<Ending>& ofSet(std::size_t set) const;
  // Whether the extraction ends with an error at this set: components in double precision are not read.
  bool endsAt(std::size_t set) const;

  bool isTaken() const { return isTaken_; }
  // Whether the field is taken, sets are visited, and there is a block.
  bool visitsSets() const { return !blocks_.empty(); }

  // Over all sets, up to the one that ends the extraction, which is counted once and kept.
  struct OverSets {
    std::uint64_t records = 0;
    std::optional<std::size_t> end;  // that set
  };
  const OverSets& overSets(const std::vector<ModelSet>& sets) const;

 private:
  struct Block {
    std::size_t location;
    std::size_t endings;  // in ofSets_
    bool endsRun;
  };

  void addBlock(const odbstore::StoredBlock& block, const Components& components, const ExtractionSwitches& switches);

  std::shared_ptr<const odbstore::FieldInfo> info_;
  std::vector<bool> exists_;  // by block of the field
  bool isTaken_ = false;
  bool isFirstBlockMeant_ = false;  // that gives the type; else the last one
  std::vector<Ending> ofWholeModel_;
  std::vector<Ending> invariants_;
  std::vector<Block> blocks_;
  std::vector<int> types_;
  std::vector<std::vector<Ending>> ofSets_;  // by types_
  SetRows* rows_;
  mutable std::optional<OverSets> overSets_;
};

// The shapes of a field, found as they are asked for.
class FieldShapes {
 public:
  // All live as long.
  FieldShapes(const odbstore::StoredField& field, const ExtractionSwitches& switches, SetRows& rows)
      : field_(&field), switches_(&switches), rows_(&rows) {}

  const odbstore::StoredField& field() const { return *field_; }
  // In a frame in which the field exists. The same object for all frames that are alike.
  const FieldShape& in(int frame);

 private:
  const odbstore::StoredField* field_;
  const ExtractionSwitches* switches_;
  SetRows* rows_;
  std::vector<std::unique_ptr<FieldShape>> shapes_;
  std::size_t last_ = 0;
};

}  // namespace inspect
