#include "importers/calculix/deck/deck_local_axes.h"

#include <algorithm>
#include <array>
#include <utility>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/deck/section_of_elements.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

// Keys of vectors and tensors: nothing else has axes.
constexpr std::array<std::string_view, 17> kKeys = {"U",   "V",   "RF",  "PU",   "MAXU", "S",    "E",    "ME",  "THE",
                                                    "HFL", "PHS", "ZZS", "MAXS", "MAXE", "SNEG", "SMID", "SPOS"};

void bringInOrder(std::vector<int>& labels) {
  std::sort(labels.begin(), labels.end());
  labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
}

// Labels of the elements whose section has an orientation.
std::vector<int> orientedElements(const Deck& deck) {
  const bool hasAny = std::any_of(deck.sections.begin(), deck.sections.end(),
                                  [](const DeckSection& section) { return section.hasOrientation; });
  if (!hasAny) return {};
  const std::vector<int>& labels = deck.mesh.elementLabels;
  const std::vector<int> sections = sectionOfElements(deck, LastPlaces(labels), kindsOfTypes(deck.mesh));
  std::vector<int> oriented;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const int section = sections[i];
    const bool isOriented = section != kNoSection && deck.sections[static_cast<std::size_t>(section)].hasOrientation;
    if (isOriented) oriented.push_back(labels[i]);
  }
  bringInOrder(oriented);
  return oriented;
}

}  // namespace

bool DeckLocalAxes::has(int step, const std::string& key) const {
  const auto place = static_cast<std::size_t>(step) - 1;
  return step > 0 && place < fields.size() && fields[place].contains(key);
}

bool DeckLocalAxesReader::start(const Keyword& keyword) {
  open_ = nullptr;
  if (keyword.name == "STEP") {
    ofNodes_.isNewInStep = ofElements_.isNewInStep = true;
    fields_.emplace_back();
    settle();
  } else if (keyword.name == "TRANSFORM") {
    if (const auto set = keyword.spelled("NSET")) transformedSets_.insert(canonicalName(*set));
  } else if (keyword.name == "NODEFILE" || keyword.name == "NODEOUTPUT") {
    open_ = &ofNodes_;
  } else if (keyword.name == "ELFILE" || keyword.name == "ELEMENTOUTPUT") {
    open_ = &ofElements_;
  }
  if (open_ == nullptr || fields_.empty()) return false;
  isLocal_ = upperCased(keyword.value("GLOBAL").value_or("")) == "NO";
  if (open_->isNewInStep) open_->keys.clear();
  open_->isNewInStep = false;
  settle();
  return true;
}

void DeckLocalAxesReader::takeData(std::string_view line) {
  for (const std::string_view item : dataItems(line)) {
    const std::string key = upperCased(item);
    if (std::find(kKeys.begin(), kKeys.end(), key) != kKeys.end()) open_->keys[key] = isLocal_;
  }
  settle();
}

void DeckLocalAxesReader::settle() {
  std::set<std::string>& fields = fields_.back();
  fields.clear();
  for (const Requests* requests : {&ofNodes_, &ofElements_}) {
    for (const auto& [key, isLocal] : requests->keys) {
      if (isLocal) fields.insert(key);
    }
  }
}

DeckLocalAxes DeckLocalAxesReader::finish(const Deck& deck) {
  DeckLocalAxes axes{std::move(fields_), {}, orientedElements(deck), {}};
  for (const std::string& name : transformedSets_) {
    const auto set = deck.nodeSets.find(name);
    if (set == deck.nodeSets.end()) continue;
    axes.nodes.insert(axes.nodes.end(), set->second.labels.begin(), set->second.labels.end());
  }
  bringInOrder(axes.nodes);
  for (const DeckSection& section : deck.sections) {
    if (section.hasOrientation) axes.orientedSets.push_back(section.elementSet);
  }
  return axes;
}

}  // namespace importers::calculix
