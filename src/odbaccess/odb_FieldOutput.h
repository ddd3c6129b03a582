// A field output: one quantity of one frame, over the model or over a set.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_FieldBulkData.h"
#include "odbaccess/odb_FieldValue.h"
#include "odbaccess/odb_FieldValueRun.h"
#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_Set.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
class FieldStorage;
struct FieldContent;
}  // namespace odb_detail

// A point of a shell's or beam's section.
class odb_SectionPoint {
 public:
  odb_SectionPoint() = default;
  odb_SectionPoint(int number, odb_String description) : number_(number), description_(std::move(description)) {}

  // From 1; 0 when there is none.
  int number() const { return number_; }
  odb_String description() const { return description_; }

 private:
  int number_ = 0;
  odb_String description_;
};

// A position on the elements or nodes, with the section points at which the field was written there.
class odb_FieldLocation {
 public:
  odb_FieldLocation(odb_Enum::odb_ResultPositionEnum position, odb_Sequence<odb_SectionPoint> sectionPoints)
      : position_(position), sectionPoints_(std::move(sectionPoints)) {}

  odb_Enum::odb_ResultPositionEnum position() const { return position_; }
  const odb_Sequence<odb_SectionPoint>& sectionPoints() const { return sectionPoints_; }

 private:
  odb_Enum::odb_ResultPositionEnum position_;
  odb_Sequence<odb_SectionPoint> sectionPoints_;
};

class odb_SequenceFieldLocation {
 public:
  odb_SequenceFieldLocation() = default;
  explicit odb_SequenceFieldLocation(std::vector<odb_FieldLocation> locations) : locations_(std::move(locations)) {}

  int size() const { return locations_.size(); }
  const odb_FieldLocation& constGet(unsigned index) const { return locations_.constGet(static_cast<int>(index)); }

 private:
  cow_List<odb_FieldLocation> locations_;
};

// The rows of all blocks of a field output as one sequence, block after block.
class odb_SequenceFieldValue {
 public:
  odb_SequenceFieldValue() = default;
  explicit odb_SequenceFieldValue(std::vector<std::shared_ptr<const odb_detail::BlockStorage>> blocks);

  int size() const { return size_; }
  odb_FieldValue constGet(unsigned index) const;

  // Hands out the values in order, those of one block at a time.
  void forEachRun(const std::function<void(odb_FieldValueRun&)>& take) const;

 private:
  std::vector<std::shared_ptr<const odb_detail::BlockStorage>> blocks_;
  std::vector<int> firstRow_;  // of each block in this sequence
  int size_ = 0;
};

// A handle. What it reads is kept by it and by the copies taken of it from then on, and goes with the
// last of them: take a copy, use it, let it go, and one field at a time is in memory. References handed
// out are good as long as the handle they came from.
class odb_FieldOutput {
 public:
  explicit odb_FieldOutput(std::shared_ptr<const odb_detail::FieldStorage> storage) : storage_(std::move(storage)) {}

  odb_String name() const;
  odb_String description() const;
  // The data-type code, see odb_DataTypeEnum.
  int type() const;
  // Whether stored shear components are engineering strains, twice the tensor components.
  bool hasEngineeringShear() const;
  odb_Sequence<odb_String> componentLabels() const;
  odb_Sequence<odb_InvariantEnum> validInvariants() const;

  // The rows one by one, as blocks, and the places where they lie.
  const odb_SequenceFieldValue& values() const;
  const odb_SequenceFieldBulkData& bulkDataBlocks() const;
  const odb_SequenceFieldLocation& locations() const;

  // The rows, in order, whose element (element set) or node (node set) is in `set`, per instance; a set of a
  // part means that set in every instance of the part. Blocks left without a row are dropped; rows of
  // nodes are in no element set.
  odb_FieldOutput getSubset(const odb_Set& set) const;

 private:
  const odb_detail::FieldContent& content() const;

  std::shared_ptr<const odb_detail::FieldStorage> storage_;
  mutable std::shared_ptr<odb_detail::FieldContent> content_;
};

using odb_FieldOutputRepository = odb_Repository<odb_String, odb_FieldOutput>;
using odb_FieldOutputRepositoryIT = odb_RepositoryIT<odb_FieldOutput>;
