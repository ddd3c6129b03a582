#include "importers/calculix/run_sets.h"

#include "base/label_index.h"
#include "importers/calculix/expansion.h"
#include "importers/calculix/sector_copies.h"
#include "importers/calculix/set_matches.h"

namespace importers::calculix {

namespace {

base::LabelIndex elementsOf(const FrdElements& mesh) {
  std::vector<int> labels;
  for (const FrdElementGroup& group : mesh.groups) {
    labels.insert(labels.end(), group.labels.begin(), group.labels.end());
  }
  return base::LabelIndex(labels);
}

}  // namespace

RunSets::RunSets(const Deck& deck, const std::vector<int>& nodes, const FrdElements& mesh, const WarningSink& warn) {
  const Expansion expansion(deck, mesh);
  for (const DeckSet* const set : deck.setsInOrder()) add(*set, expansion.membersOf(*set));
  for (const DeckSet& set : setsOfSectors(deck, sectorsOf(deck, mesh), warn)) add(set, set.labels);
  for (const base::Diagnostic& warning :
       warningsOfUnmatchedSets(deck, expansion, base::LabelIndex(nodes), elementsOf(mesh))) {
    warn(warning);
  }
}

void RunSets::add(const DeckSet& set, std::vector<int> members) {
  for (const std::string& name : set.names) {
    sets_.push_back({{set.kind, name, set.isOfSurface(), members.size(), set.place}, members_.size()});
  }
  members_.push_back(std::move(members));
}

void RunSets::addTo(Outline& outline) const {
  for (const Named& named : sets_) outline.sets.push_back(named.set);
}

void RunSets::deliver(Sink& sink) const {
  for (std::size_t i = 0; i < sets_.size(); ++i) sink.set(i, members_[sets_[i].members]);
}

}  // namespace importers::calculix
