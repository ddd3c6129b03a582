#include "importers/input/last_places.h"

namespace importers {

LastPlaces::LastPlaces(std::span<const int> labels) : index_(labels) {
  if (!index_.repeated()) return;
  last_.resize(labels.size());
  int place = 0;
  for (const int label : labels) last_[static_cast<std::size_t>(index_.placeOf(label))] = place++;
}

int LastPlaces::placeOf(int label) const {
  const int first = index_.placeOf(label);
  return first < 0 || last_.empty() ? first : last_[static_cast<std::size_t>(first)];
}

}  // namespace importers
