// A field output: one quantity of one frame, over the model or over a set.
//
//     const odb_FieldOutput stress = frame.fieldOutputs()["S"];
//     const odb_FieldOutput atRim = stress.getSubset(odb.rootAssembly().elementSets(false)["RIM"]);
//     for (int i = 0; i < atRim.values().size(); ++i) use(atRim.values().constGet(i).mises());
#pragma once

#include <memory>
#include <utility>

#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_FieldBulkData.h"
#include "odbaccess/odb_FieldLocation.h"
#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_SequenceFieldValue.h"
#include "odbaccess/odb_Set.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
class FieldStorage;
struct FieldContent;
}  // namespace odb_detail

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
  // "S11", "S22", ...; empty for a scalar.
  odb_Sequence<odb_String> componentLabels() const;
  // The derived quantities that mean something for this field, in the order of the file.
  odb_Sequence<odb_InvariantEnum> validInvariants() const;

  // The rows one by one, as blocks, and the places where they lie. No number is read before it is asked for. Throw
  // odb_Exception where the locations cannot be read.
  const odb_SequenceFieldValue& values() const;
  const odb_SequenceFieldBulkData& bulkDataBlocks() const;
  const odb_SequenceFieldLocation& locations() const;

  // The rows, in order, whose element (element set) or node (node set) is in `set`, per instance; a set of a
  // part means that set in every instance of the part. Blocks left without a row are dropped; rows of
  // nodes are in no element set. Throws odb_Exception where the labels cannot be read.
  odb_FieldOutput getSubset(const odb_Set& set) const;

 private:
  odb_detail::FieldContent& content() const;

  std::shared_ptr<const odb_detail::FieldStorage> storage_;
  mutable std::shared_ptr<odb_detail::FieldContent> content_;
};

// By name, bytes ascending, and the iterator over the names.
using odb_FieldOutputRepository = odb_Repository<odb_String, odb_FieldOutput>;
using odb_FieldOutputRepositoryIT = odb_RepositoryIT<odb_FieldOutput>;
