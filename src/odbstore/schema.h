// What a database holds, as plain values that the reader returns and the writer takes. Integers are labels or counts as
// the file stores them (int32); names are unescaped UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "odbstore/layout.h"

namespace odbstore {

// What distinguishes a location besides its labels.
struct LocationInfo {
  std::string instance;
  Position position = Position::nodal;
  std::string elementType;
  int sectionPoint = 0;  // 0 = none
  std::string sectionPointDescription;

  bool operator==(const LocationInfo&) const = default;
};

// One label per row in each array that the position has; the others are empty.
struct LocationLabels {
  std::vector<int> nodes;
  std::vector<int> elements;
  std::vector<int> integrationPoints;

  bool operator==(const LocationLabels&) const = default;
};

// The owner of a set.
struct Owner {
  OwnerKind kind = OwnerKind::assembly;
  std::string name;  // of the instance or part; empty for the assembly
};

// The labels of a set in one instance. Sets of an instance or part have one group with an empty instance name.
struct SetMembers {
  std::string instance;
  std::vector<int> labels;
};

// Absent mass is -1; absent vectors are empty, otherwise [3], [6], [6].
struct StepInfo {
  std::string description;
  double mass = -1.0;
  std::vector<double> massCenter;
  std::vector<double> inertiaAboutCenter;
  std::vector<double> inertiaAboutOrigin;
};

struct FrameInfo {
  int incrementNumber = 0;
  double value = 0.0;  // time, frequency, load factor, ...
  std::string description;
};

struct FieldInfo {
  std::string description;
  int type = static_cast<int>(FieldType::scalar);  // a FieldType; any other number is kept
  std::vector<std::string> componentLabels;
  std::vector<int> validInvariants;  // Invariants, likewise
  bool engineeringShear = false;

  bool operator==(const FieldInfo&) const = default;
};

struct HistoryRegionInfo {
  std::string description;
  int node = -1;     // -1 = none
  int element = -1;  // -1 = none
  int integrationPoint = 0;
  int sectionPoint = 0;
  std::string sectionPointDescription;
  std::string set;  // empty = none
};

// Samples row by row, [samples, width]: each has its abscissae, then the value.
struct HistorySamples {
  std::vector<float> numbers;
  std::int64_t samples = 0;
  std::int64_t width = 0;
};

}  // namespace odbstore
