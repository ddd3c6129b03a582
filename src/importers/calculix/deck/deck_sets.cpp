#include "importers/calculix/deck/deck_sets.h"

#include <fmt/core.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>
#include <vector>

#include "base/give_back.h"
#include "importers/calculix/deck/deck_keyword.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

bool looksLikeNumber(std::string_view item) {
  return item.find_first_of("0123456789+-.") == 0 && item.find_first_of("0123456789") != std::string_view::npos;
}

}  // namespace

void DeckSet::addName(const std::string& name) {
  if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
}

void DeckSet::finish() {
  const auto isOutOfOrder = std::adjacent_find(labels.begin(), labels.end(), std::greater_equal<>());
  if (isOutOfOrder == labels.end()) return;
  std::sort(labels.begin(), labels.end());
  labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
}

std::string canonicalName(std::string_view name) {
  // Two ways to write a letter are one name in the database.
  std::string canonical = upperCased(storableText(name.substr(0, name.find(','))));
  std::erase_if(canonical, [](char c) { return c == ' ' || c == '\t'; });
  return canonical;
}

int labelFrom(std::string_view item, const LineReader& lines) {
  const std::optional<int> value = integerFrom(item);
  if (!value) lines.fail(fmt::format("\"{}\" is not a label", storableText(item)));
  return *value;
}

double realFrom(std::string_view item, const LineReader& lines) {
  std::string text(item);
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == 'd' || c == 'D'; }, 'E');
  const std::optional<double> value = numberFrom(text);
  if (!value) lines.fail(fmt::format("\"{}\" is not a number", storableText(item)));
  return *value;
}

DeckSet& DeckSets::open(const std::string& name, const LineReader& lines, const WarningSink& warn) {
  const std::string shown = storableText(withoutQuotes(name));
  if (trimmed(shown).empty()) lines.fail("the set has no name");
  warnOfControlCharacters(name, lines.place(), warn);
  const auto [known, isNew] = sets_.try_emplace(canonicalName(name));
  DeckSet& set = known->second;
  if (isNew) {
    set.kind = kind_;
    set.place = lines.place();
    set.order = order_++;
  }
  set.addName(shown);
  return set;
}

void DeckSets::addLabel(DeckSet& set, int label) {
  labels_.push_back(label);
  const bool goesOn = !pieces_.empty() && pieces_.back().kind == Piece::Kind::labels && pieces_.back().to == &set;
  if (!goesOn) pieces_.push_back({&set, nullptr, Piece::Kind::labels, 0, 0, 1});
  ++pieces_.back().first;
}

void DeckSets::addMembers(DeckSet& set, std::string_view line, const LineReader& lines, const WarningSink& warn) {
  for (const std::string_view item : dataItems(line)) {
    if (item.empty()) continue;
    if (const std::optional<int> label = integerFrom(item)) {
      addLabel(set, *label);
      continue;
    }
    const auto other = sets_.find(canonicalName(item));
    if (other != sets_.end()) {
      pieces_.push_back({&set, &other->second, Piece::Kind::set, 0, 0, 1});
      continue;
    }
    if (looksLikeNumber(item)) lines.fail(fmt::format("\"{}\" is neither a label nor a set", storableText(item)));
    warn(base::warning(lines.place(), fmt::format("the set {} takes in {}, which is not a set yet", set.names.front(),
                                                  storableText(item))));
  }
}

void DeckSets::addRange(DeckSet& set, std::string_view line, const LineReader& lines) {
  const std::vector<std::string_view> items = dataItems(line);
  if (items.size() > 3) lines.fail("GENERATE takes a first label, a last label and an increment");
  const int first = labelFrom(items[0], lines);
  const int last = items.size() > 1 ? labelFrom(items[1], lines) : first;
  const int increment = items.size() > 2 ? labelFrom(items[2], lines) : 1;
  if (increment <= 0) lines.fail("the increment of GENERATE must be positive");
  if (last < first) lines.fail(fmt::format("GENERATE cannot run from {} down to {}", first, last));
  pieces_.push_back({&set, nullptr, Piece::Kind::range, first, last, increment});
}

void DeckSets::addPiece(const Piece& piece, const MeshLabels& mesh, LabelBudget& budget, Strangers& strangers) {
  std::vector<int>& to = piece.to->labels;
  const std::size_t before = to.size();
  std::uint64_t named = 0;
  if (piece.kind == Piece::Kind::set) {
    piece.from->finish();
    named = piece.from->labels.size();
    budget.take(named, piece.to->place);
    const std::vector<int> members = piece.from->labels;
    to.insert(to.end(), members.begin(), members.end());
  } else if (piece.kind == Piece::Kind::range) {
    named = static_cast<std::uint64_t>((std::int64_t{piece.last} - piece.first) / piece.increment) + 1;
    budget.take(mesh.costOfRange(piece.first, piece.last, piece.increment), piece.to->place);
    mesh.appendRange(piece.first, piece.last, piece.increment, to);
  } else {
    named = static_cast<std::uint64_t>(piece.first);
    budget.take(named, piece.to->place);
    const auto begin = labels_.begin() + static_cast<std::ptrdiff_t>(taken_);
    std::copy_if(begin, begin + piece.first, std::back_inserter(to), [&](int label) { return mesh.contains(label); });
    taken_ += static_cast<std::size_t>(piece.first);
  }
  const std::uint64_t lost = named - (to.size() - before);
  if (lost == 0) return;
  if (strangers.count == 0) strangers.place = piece.to->place;
  strangers.count += lost;
  strangers.sets.insert(piece.to);
}

void DeckSets::warnOf(const Strangers& strangers, const WarningSink& warn) const {
  if (strangers.count == 0) return;
  std::vector<const DeckSet*> sets(strangers.sets.begin(), strangers.sets.end());
  std::sort(sets.begin(), sets.end(), [](const DeckSet* a, const DeckSet* b) { return a->order < b->order; });
  std::vector<std::string> names;
  for (const DeckSet* set : sets) names.push_back(set->names.front());
  const char* const member = kind_ == odbstore::SetKind::node ? "node" : "element";
  warn(base::warning(strangers.place,
                     fmt::format("labels that no {} of the deck has are left out of the sets {} ({} in all)", member,
                                 listed(names), strangers.count)));
}

std::map<std::string, DeckSet> DeckSets::finish(const MeshLabels& mesh, LabelBudget& budget, const WarningSink& warn) {
  Strangers strangers;
  for (const Piece& piece : pieces_) addPiece(piece, mesh, budget, strangers);
  base::giveBack(pieces_);
  base::giveBack(labels_);
  warnOf(strangers, warn);
  for (auto& [name, set] : sets_) set.finish();
  return std::move(sets_);
}

}  // namespace importers::calculix
