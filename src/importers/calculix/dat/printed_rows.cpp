#include "importers/calculix/dat/printed_rows.h"

#include <algorithm>
#include <string_view>

#include "base/label_index.h"

namespace importers::calculix {

namespace {

// How many integration points elements have.
const std::map<std::string_view, std::size_t> kPointsOfSolids = {{"C3D8", 8},   {"C3D8I", 8},  {"C3D8R", 1},
                                                                 {"C3D20", 27}, {"C3D20R", 8}, {"C3D4", 1},
                                                                 {"C3D10", 4},  {"C3D15", 9},  {"C3D6", 2}};

}  // namespace

void PrintedRows::start(const DatFormat& format, const DatTable& head) {
  if (format_ != nullptr) counts_[{std::string(format_->title), set_}] = count_;
  format_ = &format;
  set_ = head.set;
  const auto before = counts_.find({std::string(format.title), set_});
  countBefore_ = before == counts_.end() ? 0 : before->second;
  count_ = 0;
  elements_.clear();
}

void PrintedRows::add(const DatValues& row) {
  ++count_;
  if (format_->rows != DatRows::integrationPoint) return;
  if (elements_.empty() || elements_.back().element != row.labels[0]) elements_.push_back({row.labels[0], 0});
  ++elements_.back().rows;
}

bool PrintedRows::areMissing() const {
  if (format_ == nullptr) return false;
  switch (format_->rows) {
    case DatRows::total:
    case DatRows::wholeModel:
      return count_ == 0;
    case DatRows::node:
      return count_ < countBefore_ || lackNodes();
    case DatRows::element:
    case DatRows::integrationPoint:
      return count_ < countBefore_ || lackElements() || lackPoints();
    default:
      // Contact comes and goes.
      return false;
  }
}

// All nodes of elements are printed; of others of the set the deck may lack the coordinates.
bool PrintedRows::lackNodes() const {
  const DeckSet* const set = deck_->setPrintedAs(set_, odbstore::SetKind::node);
  if (set == nullptr || set->kind != odbstore::SetKind::node || count_ >= set->labels.size()) return false;
  const base::LabelIndex nodes(deck_->mesh.elementNodes);
  const std::vector<int>& labels = set->labels;
  const auto used = std::count_if(labels.begin(), labels.end(), [&](int node) { return nodes.contains(node); });
  return count_ < static_cast<std::size_t>(used);
}

// Of solids every one is printed, unless a step takes some of them out.
bool PrintedRows::lackElements() const {
  const DeckSet* const set = deck_->setPrintedAs(set_, odbstore::SetKind::element);
  if (set == nullptr || set->kind != odbstore::SetKind::element || deck_->steps.removesElements) return false;
  const DeckMesh& mesh = deck_->mesh;
  const base::LabelIndex index(mesh.elementLabels);
  const auto isSolid = [&](int label) {
    const int place = index.placeOf(label);
    if (place < 0) return false;
    const int type = mesh.typeOfElement[static_cast<std::size_t>(place)];
    return mesh.elementTypes[static_cast<std::size_t>(type)].starts_with("C3D");
  };
  const std::vector<int>& labels = set->labels;
  const std::size_t found = format_->rows == DatRows::element ? count_ : elements_.size();
  return found < labels.size() && std::all_of(labels.begin(), labels.end(), isSolid);
}

// The last element against what its type has, or against others of its type.
bool PrintedRows::lackPoints() const {
  if (elements_.empty()) return false;
  const DeckMesh& mesh = deck_->mesh;
  const base::LabelIndex index(mesh.elementLabels);
  const auto typeOf = [&](int label) {
    const int place = index.placeOf(label);
    return place < 0 ? -1 : mesh.typeOfElement[static_cast<std::size_t>(place)];
  };
  const ElementRows& last = elements_.back();
  const int type = typeOf(last.element);
  if (type < 0) return false;
  const auto points = kPointsOfSolids.find(mesh.elementTypes[static_cast<std::size_t>(type)]);
  if (points != kPointsOfSolids.end() && last.rows < points->second) return true;
  return std::any_of(elements_.begin(), elements_.end(),
                     [&](const ElementRows& other) { return other.rows > last.rows && typeOf(other.element) == type; });
}

}  // namespace importers::calculix
