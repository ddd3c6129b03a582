#include "importers/calculix/dat/match_places.h"

#include <algorithm>
#include <limits>

namespace importers::calculix {

namespace {

// Beside the costs of matching.
constexpr int kNotWritten = 3;           // the other way round
constexpr int kUnknownIncrement = 1;     // the increment is not known ...
constexpr int kUnknownBesideFrames = 4;  // ... although the result file has some of its step
constexpr int kNewStep = 6;              // the step is unknown

constexpr double kForever = std::numeric_limits<double>::infinity();

}  // namespace

std::vector<MatchPlace> matchPlaces(const std::vector<StepInTime>& steps, std::size_t newSteps) {
  std::vector<MatchPlace> places;
  double last = -kForever;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const RunStep& step = *steps[i].step;
    const std::vector<KnownIncrement>& known = step.increments;
    const int unknown = step.hasFrames ? kUnknownBesideFrames : kUnknownIncrement;
    const double start = step.start.value_or(-kForever);
    for (std::size_t k = 0; k <= known.size(); ++k) {
      const bool isTail = k == known.size();
      const int number = k == 0 ? 0 : known[k - 1].number.value_or(-1);
      const bool isFluid = step.deck != nullptr && step.deck->isFluid;
      const bool isDense = !isTail && !isFluid && number >= 0 && known[k].number && *known[k].number == number + 1;
      if (isTail ? step.mayGoOn : !step.knowsAll && !isDense) {
        const double low = k == 0 ? start : known[k - 1].total.low;
        const double high = isTail ? step.end.value_or(kForever) : known[k].total.high;
        places.push_back({i, {}, {low, high}, false, unknown});
      }
      if (isTail) continue;
      places.push_back({i, k, known[k].total, known[k].isExpected, known[k].isExpected ? 0 : kNotWritten});
      last = std::max(last, known[k].total.low);
    }
  }
  for (std::size_t i = 0; i < newSteps; ++i) {
    places.push_back({steps.size() + i, {}, {last, kForever}, false, kNewStep + static_cast<int>(i)});
  }
  return places;
}

}  // namespace importers::calculix
