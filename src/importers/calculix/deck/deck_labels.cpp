#include "importers/calculix/deck/deck_labels.h"

#include <fmt/core.h>

#include <algorithm>

#include "importers/input/diagnostics.h"

namespace importers::calculix {

namespace {

// So many labels in any case, which are more than a small model has in all of its sets, and so many for each byte.
constexpr std::uint64_t kAlways = 8'000'000;
constexpr std::uint64_t kPerByte = 2;

std::uint64_t countOf(std::int64_t first, std::int64_t last, std::int64_t increment) {
  return static_cast<std::uint64_t>((last - first) / increment) + 1;
}

}  // namespace

LabelBudget::LabelBudget(std::uint64_t bytesOfDeck) : limit_(kAlways + kPerByte * bytesOfDeck), left_(limit_) {}

void LabelBudget::take(std::uint64_t labels, const SourcePlace& place) {
  if (labels > left_) {
    throw ImportError(place, fmt::format("the sets of the deck list more than {} labels in all", limit_));
  }
  left_ -= labels;
}

MeshLabels::MeshLabels(std::span<const int> labels, bool isWhole) : isWhole_(isWhole) {
  if (!isWhole) return;
  index_ = base::LabelIndex(labels);
  sorted_.assign(labels.begin(), labels.end());
  std::sort(sorted_.begin(), sorted_.end());
  sorted_.erase(std::unique(sorted_.begin(), sorted_.end()), sorted_.end());
}

std::uint64_t MeshLabels::costOfRange(std::int64_t first, std::int64_t last, std::int64_t increment) const {
  const std::uint64_t count = countOf(first, last, increment);
  return isWhole_ ? std::min<std::uint64_t>(count, sorted_.size()) : count;
}

void MeshLabels::appendRange(std::int64_t first, std::int64_t last, std::int64_t increment,
                             std::vector<int>& to) const {
  if (!isWhole_ || countOf(first, last, increment) <= sorted_.size()) {
    for (std::int64_t label = first; label <= last; label += increment) {
      if (contains(static_cast<int>(label))) to.push_back(static_cast<int>(label));
    }
    return;
  }
  for (auto at = std::lower_bound(sorted_.begin(), sorted_.end(), first); at != sorted_.end() && *at <= last; ++at) {
    if ((*at - first) % increment == 0) to.push_back(*at);
  }
}

}  // namespace importers::calculix
