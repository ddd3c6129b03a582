// Histories: how a quantity at one point of the model, or over a set of it, runs through a step.
#pragma once

#include <memory>

#include "odbaccess/odb_FieldOutput.h"
#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_Set.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
class HistoryRegionStorage;
class HistoryOutputStorage;
}  // namespace odb_detail

class odb_Node {
 public:
  explicit odb_Node(int label) : label_(label) {}
  // -1 when there is none.
  int label() const { return label_; }

 private:
  int label_;
};

class odb_Element {
 public:
  explicit odb_Element(int label) : label_(label) {}
  // -1 when there is none.
  int label() const { return label_; }

 private:
  int label_;
};

// Where a history belongs: any of a node, an element, a point in it, a set.
class odb_HistoryPoint {
 public:
  odb_HistoryPoint(odb_Node node, odb_Element element, int integrationPoint, odb_SectionPoint sectionPoint,
                   odb_Set region)
      : node_(node),
        element_(element),
        integrationPoint_(integrationPoint),
        sectionPoint_(std::move(sectionPoint)),
        region_(std::move(region)) {}

  const odb_Node& node() const { return node_; }
  const odb_Element& element() const { return element_; }
  // 0 when there is none.
  int integrationPoint() const { return integrationPoint_; }
  const odb_SectionPoint& sectionPoint() const { return sectionPoint_; }
  // A set with an empty name when there is none.
  const odb_Set& region() const { return region_; }

 private:
  odb_Node node_;
  odb_Element element_;
  int integrationPoint_;
  odb_SectionPoint sectionPoint_;
  odb_Set region_;
};

class odb_HistoryOutput {
 public:
  explicit odb_HistoryOutput(std::shared_ptr<const odb_detail::HistoryOutputStorage> storage)
      : storage_(std::move(storage)) {}
  virtual ~odb_HistoryOutput() = default;
  odb_HistoryOutput(const odb_HistoryOutput&) = default;
  odb_HistoryOutput& operator=(const odb_HistoryOutput&) = default;

  // The samples, read at each call: of each its abscissae (as a rule one, the time), then the value.
  virtual odb_SequenceSequenceFloat data() const;

  odb_String name() const;

 private:
  std::shared_ptr<const odb_detail::HistoryOutputStorage> storage_;
};

class odb_HistoryRegion {
 public:
  explicit odb_HistoryRegion(std::shared_ptr<const odb_detail::HistoryRegionStorage> storage)
      : storage_(std::move(storage)) {}

  odb_String name() const;
  odb_String description() const;
  odb_HistoryPoint historyPoint() const;
  // By name, bytes ascending.
  odb_Repository<odb_String, odb_HistoryOutput> historyOutputs() const;

 private:
  std::shared_ptr<const odb_detail::HistoryRegionStorage> storage_;
};

using odb_HistoryRegionRepository = odb_Repository<odb_String, odb_HistoryRegion>;
