// The names and codes of the file: every link and attribute that the layouts know, and the codes of types and
// invariants. They are documented in docs/database-format.md.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace odbstore {

inline constexpr int kNewestLayout = 3;

// Links. names.h turns names chosen by users into links.
namespace links {
inline constexpr const char* kAssembly = "assembly";
inline constexpr const char* kBlocks = "blocks";
inline constexpr const char* kCatalog = "catalog";
inline constexpr const char* kChecksums = "checksums";
inline constexpr const char* kConnectivity = "connectivity";
inline constexpr const char* kCoordinates = "coordinates";
inline constexpr const char* kData = "data";
inline constexpr const char* kDescription = "description";
inline constexpr const char* kElementLabels = "elementLabels";
inline constexpr const char* kElements = "elements";
inline constexpr const char* kElementSets = "elementSets";
inline constexpr const char* kFields = "fields";
inline constexpr const char* kFirst = "first";
inline constexpr const char* kForms = "forms";
inline constexpr const char* kFrames = "frames";
inline constexpr const char* kHistory = "history";
inline constexpr const char* kIncrementNumber = "incrementNumber";
inline constexpr const char* kInstances = "instances";
inline constexpr const char* kIntegrationPoints = "integrationPoints";
inline constexpr const char* kLabels = "labels";
inline constexpr const char* kLocations = "locations";
inline constexpr const char* kMesh = "mesh";
inline constexpr const char* kNames = "names";
inline constexpr const char* kNodeLabels = "nodeLabels";
inline constexpr const char* kNodes = "nodes";
inline constexpr const char* kNodeSets = "nodeSets";
inline constexpr const char* kOutputs = "outputs";
inline constexpr const char* kPackedElementSets = "packedElementSets";
inline constexpr const char* kPackedHistory = "packedHistory";
inline constexpr const char* kPackedNodeSets = "packedNodeSets";
inline constexpr const char* kParts = "parts";
inline constexpr const char* kRegion = "region";
inline constexpr const char* kRegions = "regions";
inline constexpr const char* kRowOf = "rowOf";
inline constexpr const char* kSamples = "samples";
inline constexpr const char* kSector = "sector";
inline constexpr const char* kSteps = "steps";
inline constexpr const char* kSymmetryAxis = "symmetryAxis";
inline constexpr const char* kValue = "value";
inline constexpr const char* kWidth = "width";
}  // namespace links

namespace attributes {
inline constexpr const char* kAlgorithm = "algorithm";
inline constexpr const char* kBlockSize = "blockSize";
inline constexpr const char* kComponentLabels = "componentLabels";
inline constexpr const char* kDescription = "description";
inline constexpr const char* kElement = "element";
inline constexpr const char* kElementType = "elementType";
inline constexpr const char* kEngineeringShear = "engineeringShear";
inline constexpr const char* kIncrementNumber = "incrementNumber";
inline constexpr const char* kInertiaAboutCenter = "inertiaAboutCenter";
inline constexpr const char* kInertiaAboutOrigin = "inertiaAboutOrigin";
inline constexpr const char* kInstance = "instance";
inline constexpr const char* kIntegrationPoint = "integrationPoint";
inline constexpr const char* kLayout = "layout";
inline constexpr const char* kLocation = "location";
inline constexpr const char* kMass = "mass";
inline constexpr const char* kMassCenter = "massCenter";
inline constexpr const char* kName = "name";
inline constexpr const char* kNode = "node";
inline constexpr const char* kPart = "part";
inline constexpr const char* kPosition = "position";
inline constexpr const char* kProducer = "producer";
inline constexpr const char* kSectionPoint = "sectionPoint";
inline constexpr const char* kSectionPointDescription = "sectionPointDescription";
inline constexpr const char* kSet = "set";
inline constexpr const char* kStoredRows = "storedRows";
inline constexpr const char* kTitle = "title";
inline constexpr const char* kType = "type";
inline constexpr const char* kValidInvariants = "validInvariants";
inline constexpr const char* kValue = "value";
}  // namespace attributes

// The kind of a field's rows. Any other number is kept as it is; it may mean something to the program that wrote it.
enum class FieldType : int {
  scalar = 2,
  vector = 3,
  tensor3dFull = 5,     // 11, 22, 33, 12, 13, 23
  tensor3dPlanar = 6,   // 11, 22, 33, 12
  tensor3dSurface = 7,  // 11, 22, 12
  tensor2dPlanar = 8,   // 11, 22, 33, 12
  tensor2dSurface = 9   // 11, 22, 12
};

constexpr bool isTensorType(FieldType type) {
  return type >= FieldType::tensor3dFull && type <= FieldType::tensor2dSurface;
}
constexpr bool isTensorType(int number) { return isTensorType(FieldType{number}); }

// Quantities that can be derived from a row. Other numbers in a file are ignored.
enum class Invariant : int {
  maxPrincipal = 1,
  midPrincipal = 2,
  minPrincipal = 3,
  mises = 4,
  tresca = 5,
  press = 6,
  inv3 = 7,
  magnitude = 8,
  maxInPlanePrincipal = 9,
  minInPlanePrincipal = 10,
  outOfPlanePrincipal = 11
};

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

enum class SetKind { element, node };

// Who owns a set.
enum class OwnerKind { assembly, instance, part };

// The link under which an owner keeps its sets of a kind.
constexpr const char* setsLink(SetKind kind) {
  return kind == SetKind::element ? links::kElementSets : links::kNodeSets;
}

constexpr const char* packedSetsLink(SetKind kind) {
  return kind == SetKind::element ? links::kPackedElementSets : links::kPackedNodeSets;
}

// The components of a tensor in their canonical order.
inline constexpr std::array<std::string_view, 6> kTensorComponents = {"11", "22", "33", "12", "13", "23"};

// The components of a tensor type in the order in which they are stored if they have no labels.
const std::vector<std::string>& defaultTensorLabels(int type);

}  // namespace odbstore
