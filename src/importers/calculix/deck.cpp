#include "importers/calculix/deck.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>

#include "importers/calculix/deck_keyword.h"
#include "importers/line_reader.h"
#include "importers/text_fields.h"

namespace importers::calculix {

std::string canonicalName(std::string_view name) {
  std::string canonical = upperCased(name);
  std::erase_if(canonical, [](char c) { return c == ' ' || c == '\t' || c == '"'; });
  return canonical;
}

namespace {

// Keywords include each other's files only so deep.
constexpr std::size_t kDeepestInclude = 32;
// More members than any model has: a damaged GENERATE line shall not fill the memory.
constexpr std::int64_t kLargestGeneratedSet = std::int64_t{1} << 28;

using Sets = std::map<std::string, DeckSet>;

class DeckReader {
 public:
  explicit DeckReader(const WarningSink& warn) : warn_(warn) {}

  void readFile(const std::string& path) {
    if (files_.size() >= kDeepestInclude) throw ImportError(path, 0, "files include each other too deep");
    const std::string identity = std::filesystem::weakly_canonical(path).string();
    if (!files_.insert(identity).second) throw ImportError(path, 0, "the file includes itself");
    LineReader lines(path);
    std::string_view line;
    while (lines.next(line)) {
      line = trimmed(line);
      if (line.empty() || isComment(line)) continue;
      if (isKeyword(line)) {
        startKeyword(joined(lines, line), lines);
      } else {
        takeData(line, lines);
      }
    }
    files_.erase(identity);
  }

  Deck finish() {
    for (Sets* sets : {&deck_.nodeSets, &deck_.elementSets}) {
      for (auto& [name, set] : *sets) {
        std::sort(set.labels.begin(), set.labels.end());
        set.labels.erase(std::unique(set.labels.begin(), set.labels.end()), set.labels.end());
      }
    }
    return std::move(deck_);
  }

 private:
  enum class Data { none, heading, stepTitle, nodes, elements, nodeSet, elementSet };

  // A keyword line that ends in a comma goes on in the next one.
  static std::string joined(LineReader& lines, std::string_view line) {
    std::string whole(line);
    std::string_view more;
    while (whole.back() == ',' && lines.next(more)) {
      if (isComment(more)) continue;
      whole += trimmed(more);
    }
    return whole;
  }

  void startKeyword(const std::string& line, LineReader& lines) {
    const Keyword keyword = parseKeyword(line);
    data_ = Data::none;
    set_ = nullptr;
    missingNodes_ = 0;
    if (keyword.name == "INCLUDE") {
      include(keyword, lines);
    } else if (keyword.name == "HEADING") {
      data_ = Data::heading;
    } else if (keyword.name == "STEP") {
      deck_.stepTitles.emplace_back();
      data_ = Data::stepTitle;
    } else if (keyword.name == "NODE") {
      data_ = Data::nodes;
      if (const auto name = keyword.value("NSET")) set_ = &openSet(deck_.nodeSets, *name);
    } else if (keyword.name == "ELEMENT") {
      startElements(keyword, lines);
    } else if (keyword.name == "NSET") {
      startSet(keyword, "NSET", deck_.nodeSets, Data::nodeSet, lines);
    } else if (keyword.name == "ELSET") {
      startSet(keyword, "ELSET", deck_.elementSets, Data::elementSet, lines);
    }
  }

  void include(const Keyword& keyword, LineReader& lines) {
    const auto name = keyword.value("INPUT");
    if (!name) lines.fail("*INCLUDE names no file");
    // The solver looks in its working directory, where the deck usually lies.
    const std::filesystem::path directory = std::filesystem::path(lines.path()).parent_path();
    const std::filesystem::path path = directory / *name;
    if (!std::filesystem::exists(path)) lines.fail(fmt::format("the included file {} does not exist", path.string()));
    readFile(path.string());
  }

  void startElements(const Keyword& keyword, LineReader& lines) {
    const auto type = keyword.value("TYPE");
    if (!type) lines.fail("*ELEMENT names no type");
    data_ = Data::elements;
    const std::string name = upperCased(*type);
    const auto known = std::find(deck_.elementTypes.begin(), deck_.elementTypes.end(), name);
    type_ = static_cast<int>(known - deck_.elementTypes.begin());
    if (known == deck_.elementTypes.end()) deck_.elementTypes.push_back(name);
    nodesPerElement_ = nodesOfElementType(name);
    if (const auto set = keyword.value("ELSET")) set_ = &openSet(deck_.elementSets, *set);
  }

  void startSet(const Keyword& keyword, const char* parameter, Sets& sets, Data data, LineReader& lines) {
    const auto name = keyword.value(parameter);
    if (!name) lines.fail(fmt::format("*{} names no set", parameter));
    set_ = &openSet(sets, *name);
    generate_ = keyword.has("GENERATE");
    data_ = data;
  }

  // A set is opened as often as the deck names it.
  static DeckSet& openSet(Sets& sets, const std::string& name) {
    DeckSet& set = sets[canonicalName(name)];
    if (set.name.empty()) set.name = name;
    return set;
  }

  void takeData(std::string_view line, LineReader& lines) {
    switch (data_) {
      case Data::heading:
        if (deck_.heading.empty()) deck_.heading = line;
        break;
      case Data::stepTitle:
        deck_.stepTitles.back() = line;
        data_ = Data::none;
        break;
      case Data::nodes:
        if (set_ != nullptr) set_->labels.push_back(label(dataItems(line).front(), lines));
        break;
      case Data::elements:
        takeElement(line, lines);
        break;
      case Data::nodeSet:
        takeMembers(line, deck_.nodeSets, lines);
        break;
      case Data::elementSet:
        takeMembers(line, deck_.elementSets, lines);
        break;
      case Data::none:
        break;
    }
  }

  static int label(std::string_view item, const LineReader& lines) {
    const std::optional<int> value = integerFrom(item);
    if (!value) lines.fail(fmt::format("\"{}\" is not a label", item));
    return *value;
  }

  // An element's nodes go on over lines until there are enough; of a type that is not known, while a line ends in a
  // comma.
  void takeElement(std::string_view line, LineReader& lines) {
    const std::vector<std::string_view> items = dataItems(line);
    int nodes = static_cast<int>(items.size());
    if (missingNodes_ == 0) {
      const int element = label(items.front(), lines);
      deck_.typeOfElement[element] = type_;
      if (set_ != nullptr) set_->labels.push_back(element);
      missingNodes_ = nodesPerElement_;
      --nodes;
    }
    if (nodesPerElement_ > 0) {
      missingNodes_ = std::max(0, missingNodes_ - nodes);
    } else {
      missingNodes_ = line.back() == ',' ? 1 : 0;
    }
  }

  void takeMembers(std::string_view line, const Sets& sets, LineReader& lines) {
    const std::vector<std::string_view> items = dataItems(line);
    if (generate_) {
      takeRange(items, lines);
      return;
    }
    for (const std::string_view item : items) {
      if (const std::optional<int> value = integerFrom(item)) {
        set_->labels.push_back(*value);
      } else {
        takeSet(item, sets, lines);
      }
    }
  }

  void takeSet(std::string_view name, const Sets& sets, const LineReader& lines) {
    const auto found = sets.find(canonicalName(name));
    if (found == sets.end()) {
      warn_(fmt::format("{}: warning: the set {} takes in \"{}\", which is neither a label nor a set",
                        placeIn(lines.path(), lines.lineNumber()), set_->name, name));
      return;
    }
    const std::vector<int> members = found->second.labels;
    set_->labels.insert(set_->labels.end(), members.begin(), members.end());
  }

  void takeRange(const std::vector<std::string_view>& items, LineReader& lines) {
    if (items.empty() || items.size() > 3) lines.fail("GENERATE takes a first label, a last label and an increment");
    const std::int64_t first = label(items[0], lines);
    const std::int64_t last = items.size() > 1 ? label(items[1], lines) : first;
    const std::int64_t step = items.size() > 2 ? label(items[2], lines) : 1;
    if (step <= 0) lines.fail("the increment of GENERATE must be positive");
    if ((last - first) / step > kLargestGeneratedSet) lines.fail("GENERATE makes too many labels");
    for (std::int64_t value = first; value <= last; value += step) set_->labels.push_back(static_cast<int>(value));
  }

  const WarningSink& warn_;
  Deck deck_;
  std::set<std::string> files_;  // those that are open
  Data data_ = Data::none;
  DeckSet* set_ = nullptr;  // the set that the data lines belong to
  bool generate_ = false;
  int type_ = 0;
  int nodesPerElement_ = 0;
  int missingNodes_ = 0;
};

}  // namespace

Deck readDeck(const std::string& path, const WarningSink& warn) {
  DeckReader reader(warn);
  reader.readFile(path);
  return reader.finish();
}

}  // namespace importers::calculix
