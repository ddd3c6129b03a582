#include "inspect/set_rows.h"

#include <algorithm>
#include <utility>

namespace inspect {

SetRows::SetRows(std::shared_ptr<const odbstore::DatabaseFile> file, const std::vector<ModelSet>& sets)
    : file_(std::move(file)), sets_(sets), touched_(sets.size()) {}

std::size_t SetRows::add(const std::shared_ptr<const odbstore::StoredLocation>& location) {
  const auto [found, isNew] = numbers_.try_emplace(location.get(), locations_.size());
  if (isNew) locations_.push_back({location, location->info().instance, {}, {}});
  return found->second;
}

bool SetRows::touch(std::size_t set, std::size_t location) {
  if (touched_[set].size() <= location) extend(set);
  return touched_[set][location];
}

void SetRows::extend(std::size_t set) {
  std::vector<bool>& touched = touched_[set];
  const std::vector<SetLabels> members = setLabels(*file_, set);
  for (std::size_t i = touched.size(); i < locations_.size(); ++i) {
    Location& location = locations_[i];
    touched.push_back(std::any_of(members.begin(), members.end(), [&](const SetLabels& group) {
      if (group.instance != location.instance || group.labels.empty()) return false;
      const LabelSet* const labels = labelsOf(location, sets_[set].kind);
      return labels != nullptr &&
             std::any_of(group.labels.begin(), group.labels.end(), [&](int label) { return labels->contains(label); });
    }));
  }
}

const LabelSet* SetRows::labelsOf(Location& location, odbstore::SetKind kind) {
  const bool byElement = kind == odbstore::SetKind::element;
  const odbstore::Position position = location.stored->position();
  if (byElement ? !odbstore::hasElementLabels(position) : !odbstore::hasNodeLabels(position)) return nullptr;
  std::optional<LabelSet>& labels = byElement ? location.elements : location.nodes;
  if (!labels) labels.emplace(byElement ? location.stored->elementLabels() : location.stored->nodeLabels());
  return &*labels;
}

}  // namespace inspect
