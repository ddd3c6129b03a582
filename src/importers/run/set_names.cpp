#include "importers/run/set_names.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace importers {

namespace {

using odbstore::SetKind;

bool isSurfaceOfNodes(const NamedSet& set) { return set.kind == SetKind::node && set.isOfSurface; }

class SetNames {
 public:
  explicit SetNames(std::span<const NamedSet> sets) : sets_(sets), final_(sets.size()) {}

  std::vector<FinalSetName> run() {
    keepNames([](const NamedSet& set) { return set.kind == SetKind::element && !set.isOfSurface; });
    keepNames([](const NamedSet& set) { return set.kind == SetKind::element; });
    ofElements_ = taken_;
    keepNames([](const NamedSet& set) { return set.kind == SetKind::node && !set.isOfSurface; });
    for (std::size_t i = 0; i < sets_.size(); ++i) {
      if (final_[i].name.empty()) final_[i] = otherName(sets_[i]);
    }
    return std::move(final_);
  }

 private:
  // Gives sets of a kind their own names where those are free.
  template <class Condition>
  void keepNames(const Condition& isOfKind) {
    for (std::size_t i = 0; i < sets_.size(); ++i) {
      const bool isOpen = final_[i].name.empty() && isOfKind(sets_[i]);
      if (isOpen && taken_.insert(nameInRecords(sets_[i].name)).second) final_[i] = {sets_[i].name, false};
    }
  }

  FinalSetName otherName(const NamedSet& set) {
    const std::string plain = nameInRecords(set.name);
    const bool hasSuffix = isSurfaceOfNodes(set) || (set.kind == SetKind::node && ofElements_.contains(plain));
    const std::string name = hasSuffix ? set.name + kNodesSuffix : set.name;
    if (taken_.insert(nameInRecords(name)).second) return {name, !isSurfaceOfNodes(set)};
    return {numbered(name), true};
  }

  std::string numbered(const std::string& name) {
    int& last = lastNumber_.try_emplace(nameInRecords(name), 1).first->second;
    std::string candidate;
    do {
      candidate = name + '-' + std::to_string(++last);
    } while (!taken_.insert(nameInRecords(candidate)).second);
    return candidate;
  }

  std::span<const NamedSet> sets_;
  std::vector<FinalSetName> final_;             // without a name while it is open
  std::unordered_set<std::string> taken_;       // as in records
  std::unordered_set<std::string> ofElements_;  // those that element sets keep
  std::unordered_map<std::string, int> lastNumber_;
};

}  // namespace

std::string nameInRecords(std::string_view name) {
  std::string plain(name);
  std::replace_if(
      plain.begin(), plain.end(), [](char c) { return c == '-' || c == ' '; }, '_');
  return plain;
}

bool isLeftOutOfRecords(std::string_view name) {
  return name.find("Warn") != std::string_view::npos || name.find("Info") != std::string_view::npos;
}

std::vector<FinalSetName> uniqueSetNames(std::span<const NamedSet> sets) { return SetNames(sets).run(); }

}  // namespace importers
