// Where a history belongs.
//
//     const odb_HistoryPoint point = region.historyPoint();
//     if (point.node().label() != -1) std::printf("node %d\n", point.node().label());
//     if (point.region().name().length() > 0) std::printf("set %s\n", point.region().name().cStr());
#pragma once

#include <utility>

#include "odbaccess/odb_SectionPoint.h"
#include "odbaccess/odb_Set.h"

// A node, by its label.
class odb_Node {
 public:
  explicit odb_Node(int label) : label_(label) {}
  // -1 when there is none.
  int label() const { return label_; }

 private:
  int label_;
};

// An element, by its label.
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

  // References are good as long as this object.
  const odb_Node& node() const { return node_; }
  const odb_Element& element() const { return element_; }
  // 0 when there is none.
  int integrationPoint() const { return integrationPoint_; }
  // Its number is 0 when there is none.
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
