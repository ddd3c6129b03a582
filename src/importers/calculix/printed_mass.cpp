#include "importers/calculix/printed_mass.h"

#include <algorithm>
#include <set>

namespace importers::calculix {

namespace {

bool hasAllElements(const DeckSet& set, const DeckMesh& mesh) {
  const std::set<int> all(mesh.elementLabels.begin(), mesh.elementLabels.end());
  return std::equal(set.labels.begin(), set.labels.end(), all.begin(), all.end());
}

// From the second moments xx, yy, zz, xy, xz, yz.
std::vector<double> inertiaOf(const std::vector<double>& m) {
  return {m[1] + m[2], m[0] + m[2], m[0] + m[1], -m[3], -m[4], -m[5]};
}

}  // namespace

void takePrintedMass(std::span<const PrintedTable> tables, int step, const Deck& deck, odbstore::StepInfo& info) {
  for (const PrintedTable& table : tables) {
    const bool isSum = table.step == step && table.format->rows == DatRows::total && !table.isOfSection;
    if (!isSum || table.kept.empty() || table.kept.front().numbers.size() < table.format->width()) continue;
    const auto set = deck.elementSets.find(table.head.set);
    if (set == deck.elementSets.end() || !hasAllElements(set->second, deck.mesh)) continue;
    const std::vector<double>& numbers = table.kept.front().numbers;
    const std::string_view name = table.format->name;
    if (name == "EMAS") info.mass = numbers[0];
    if (name == "ECG") info.massCenter = numbers;
    if (name == "EM") info.inertiaAboutOrigin = inertiaOf(numbers);
    if (name == "ECM") info.inertiaAboutCenter = inertiaOf(numbers);
  }
}

}  // namespace importers::calculix
