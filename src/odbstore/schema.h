// What a database holds, as plain values: the vocabulary that the reader hands out and the writer takes.
// Integers are labels or counts as the file stores them (int32); names are unescaped UTF-8.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace odbstore {

inline constexpr int kNewestLayout = 2;

// Where the rows of a block lie on the model.
enum class Position { nodal, integrationPoint, elementNodal, centroid, wholeElement };

// The word that the file stores for a position, and back (nothing for an unknown word).
std::string_view positionWord(Position position);
std::optional<Position> positionFromWord(std::string_view word);

// Which label arrays a location of that position has.
constexpr bool hasNodeLabels(Position position) {
  return position == Position::nodal || position == Position::elementNodal;
}
constexpr bool hasElementLabels(Position position) { return position != Position::nodal; }
constexpr bool hasIntegrationPoints(Position position) { return position == Position::integrationPoint; }

// What tells one location from another apart from its labels.
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

enum class SetKind { element, node };

// Who owns a set.
enum class OwnerKind { assembly, instance, part };
struct Owner {
  OwnerKind kind = OwnerKind::assembly;
  std::string name;  // of the instance or part; empty for the assembly
};

// The labels of a set in one instance. Sets of an instance or part have one group with an empty instance name.
struct SetMembers {
  std::string instance;
  std::vector<int> labels;
};

// Absent mass is -1; absent vectors are empty, else [3], [6], [6].
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

// Data types: 2 scalar, 3 vector, 5..9 tensor kinds. Rows of any other type are kept under their number, whatever it
// may mean to the program that wrote it.
constexpr bool isTensorType(int type) { return type >= 5 && type <= 9; }

struct FieldInfo {
  std::string description;
  int type = 2;
  std::vector<std::string> componentLabels;
  std::vector<int> validInvariants;
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

// Samples row by row, [samples, width]: each its abscissae, then the value.
struct HistorySamples {
  std::vector<float> numbers;
  std::int64_t samples = 0;
  std::int64_t width = 0;
};

// The components of a tensor in their canonical places.
inline constexpr std::array<std::string_view, 6> kTensorComponents = {"11", "22", "33", "12", "13", "23"};

// The components of a tensor kind (5..9) in the order in which they are stored without labels.
const std::vector<std::string>& defaultTensorLabels(int type);

}  // namespace odbstore
