#include "importers/calculix/dat/printed_mass.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "importers/calculix/deck/element_kinds.h"

namespace importers::calculix {

namespace {

bool hasAllElements(const DeckSet& set, const DeckMesh& mesh) {
  const std::set<int> all(mesh.elementLabels.begin(), mesh.elementLabels.end());
  return std::equal(set.labels.begin(), set.labels.end(), all.begin(), all.end());
}

// Whether the solver's sums over all elements are the model's: they have two degrees of a ring, nothing of point masses
// and nothing of user elements.
bool hasWholeSums(const DeckMesh& mesh) {
  return mesh.isWhole() &&
         std::none_of(mesh.elementTypes.begin(), mesh.elementTypes.end(), [](const std::string& type) {
           const Family family = elementKind(type).family;
           return family == Family::axisymmetric || family == Family::point || family == Family::unknown ||
                  type.front() == 'U';
         });
}

// From the second moments xx, yy, zz, xy, xz, yz.
std::vector<double> inertiaOf(const std::vector<double>& m) {
  return {m[1] + m[2], m[0] + m[2], m[0] + m[1], -m[3], -m[4], -m[5]};
}

// The solver sums at integration points. That gives elements of few points no inertia of their own, so that a computed
// one of the same mass is better.
bool isSameMass(double printed, double computed) { return std::abs(printed - computed) <= 1e-4 * computed; }

}  // namespace

void takePrintedMass(std::span<const PrintedTable> tables, int step, const Deck& deck, odbstore::StepInfo& info) {
  const double computed = info.mass;
  const bool isWhole = hasWholeSums(deck.mesh);
  for (const PrintedTable& table : tables) {
    const bool isSum = table.step == step && table.format->rows == DatRows::total && !table.isOfSection;
    if (!isSum || table.kept.empty() || table.kept.front().numbers.size() < table.format->width()) continue;
    const auto set = deck.elementSets.find(table.head.set);
    if (!isWhole || set == deck.elementSets.end() || !hasAllElements(set->second, deck.mesh)) continue;
    const std::vector<double>& numbers = table.kept.front().numbers;
    const std::string_view name = table.format->name;
    if (name == "EMAS") info.mass = numbers[0];
    if (name == "ECG") info.massCenter = numbers;
    if (isSameMass(info.mass, computed)) continue;
    if (name == "EM") info.inertiaAboutOrigin = inertiaOf(numbers);
    if (name == "ECM") info.inertiaAboutCenter = inertiaOf(numbers);
  }
}

}  // namespace importers::calculix
