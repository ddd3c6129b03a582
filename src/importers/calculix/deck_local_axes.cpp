#include "importers/calculix/deck_local_axes.h"

#include <algorithm>
#include <array>

#include "importers/calculix/deck_set.h"
#include "importers/text_fields.h"

namespace importers::calculix {

namespace {

// Keys of vectors and tensors: nothing else has axes.
constexpr std::array<std::string_view, 17> kKeys = {"U",   "V",   "RF",  "PU",   "MAXU", "S",    "E",    "ME",  "THE",
                                                    "HFL", "PHS", "ZZS", "MAXS", "MAXE", "SNEG", "SMID", "SPOS"};

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

}  // namespace importers::calculix
