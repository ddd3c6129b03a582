#include "importers/calculix/deck.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <set>

#include "importers/calculix/deck_keyword.h"
#include "importers/calculix/deck_sets.h"
#include "importers/line_reader.h"
#include "importers/text_fields.h"

namespace importers::calculix {

namespace {

// Files include each other only so deep.
constexpr std::size_t kDeepestInclude = 32;

class DeckReader {
 public:
  DeckReader(const std::string& path, const WarningSink& warn)
      : directory_(std::filesystem::path(path).parent_path()), warn_(warn) {}

  void readFile(const std::string& path) {
    LineReader lines(path);
    const std::string identity = std::filesystem::weakly_canonical(path).string();
    openFiles_.insert(identity);
    std::string_view line;
    while (lines.next(line)) {
      line = trimmed(line);
      if (line.empty() || isComment(line)) continue;
      if (line.find('\0') != std::string_view::npos) lines.fail("this is no text");
      if (isKeyword(line)) {
        startKeyword(joined(lines, line), lines);
      } else {
        takeData(line, lines);
      }
    }
    openFiles_.erase(identity);
  }

  Deck finish() {
    deck_.nodeSets = nodeSets_.finish();
    deck_.elementSets = elementSets_.finish();
    return std::move(deck_);
  }

 private:
  enum class Data { none, heading, stepTitle, nodes, elements, nodeSet, elementSet };

  // A keyword line that ends in a comma goes on in the next one.
  static std::string joined(LineReader& lines, std::string_view line) {
    std::string whole(line);
    std::string_view more;
    while (whole.back() == ',' && lines.next(more)) {
      more = trimmed(more);
      if (!isComment(more)) whole += more;
    }
    return whole;
  }

  void startKeyword(const std::string& line, LineReader& lines) {
    const Keyword keyword = parseKeyword(line);
    if (keyword.name == "INCLUDE") {
      // What the file begins with goes on with what came before it.
      include(keyword, lines);
      return;
    }
    data_ = Data::none;
    set_ = nullptr;
    missingNodes_ = 0;
    if (keyword.name == "HEADING") {
      data_ = Data::heading;
    } else if (keyword.name == "STEP") {
      deck_.stepTitles.emplace_back();
      data_ = Data::stepTitle;
    } else if (keyword.name == "ELFILE" || keyword.name == "ELEMENTOUTPUT") {
      const bool isFirst = deck_.sectionForcesFrom == 0 && keyword.has("SECTIONFORCES");
      if (isFirst) deck_.sectionForcesFrom = static_cast<int>(deck_.stepTitles.size());
    } else if (keyword.name == "NODE") {
      data_ = Data::nodes;
      if (const auto name = keyword.value("NSET")) set_ = &nodeSets_.open(*name, lines);
    } else if (keyword.name == "ELEMENT") {
      startElements(keyword, lines);
    } else if (keyword.name == "USERELEMENT") {
      defineUserElement(keyword, lines);
    } else if (keyword.name == "NSET") {
      startSet(keyword, nodeSets_, Data::nodeSet, lines);
    } else if (keyword.name == "ELSET") {
      startSet(keyword, elementSets_, Data::elementSet, lines);
    }
  }

  void include(const Keyword& keyword, LineReader& lines) {
    const auto name = keyword.value("INPUT");
    if (!name) lines.fail("*INCLUDE names no file");
    std::filesystem::path path = std::filesystem::path(lines.path()).parent_path() / *name;
    if (!std::filesystem::exists(path)) path = directory_ / *name;
    if (!std::filesystem::exists(path)) lines.fail(fmt::format("the included file {} does not exist", *name));
    if (openFiles_.contains(std::filesystem::weakly_canonical(path).string())) {
      lines.fail(fmt::format("{} includes itself", *name));
    }
    if (openFiles_.size() >= kDeepestInclude) lines.fail("files include each other too deep");
    readFile(path.string());
  }

  void startElements(const Keyword& keyword, LineReader& lines) {
    const auto type = keyword.value("TYPE");
    if (!type) lines.fail("*ELEMENT names no type");
    data_ = Data::elements;
    const std::string name = upperCased(storableText(*type));
    const auto known = std::find(deck_.elementTypes.begin(), deck_.elementTypes.end(), name);
    type_ = static_cast<int>(known - deck_.elementTypes.begin());
    if (known == deck_.elementTypes.end()) deck_.elementTypes.push_back(name);
    const auto ofUser = nodesOfUserType_.find(name);
    nodesPerElement_ = ofUser != nodesOfUserType_.end() ? ofUser->second : nodesOfElementType(name);
    if (const auto set = keyword.value("ELSET")) set_ = &elementSets_.open(*set, lines);
  }

  void defineUserElement(const Keyword& keyword, LineReader& lines) {
    const auto type = keyword.value("TYPE");
    const auto nodes = keyword.value("NODES");
    if (!type || !nodes) return;
    const std::optional<int> count = integerFrom(*nodes);
    if (!count || *count < 1) lines.fail(fmt::format("\"{}\" is not a number of nodes", storableText(*nodes)));
    nodesOfUserType_[upperCased(storableText(*type))] = *count;
  }

  void startSet(const Keyword& keyword, DeckSets& sets, Data data, LineReader& lines) {
    const auto name = keyword.value(keyword.name);
    if (!name) lines.fail(fmt::format("*{} names no set", keyword.name));
    set_ = &sets.open(*name, lines);
    generate_ = keyword.has("GENERATE");
    data_ = data;
  }

  void takeData(std::string_view line, LineReader& lines) {
    switch (data_) {
      case Data::heading:
        if (deck_.heading.empty()) deck_.heading = storableText(line);
        break;
      case Data::stepTitle:
        deck_.stepTitles.back() = storableText(line);
        data_ = Data::none;
        break;
      case Data::nodes:
        if (set_ != nullptr) set_->labels.push_back(labelFrom(line.substr(0, line.find(',')), lines));
        break;
      case Data::elements:
        takeElement(line, lines);
        break;
      case Data::nodeSet:
        takeMembers(nodeSets_, line, lines);
        break;
      case Data::elementSet:
        takeMembers(elementSets_, line, lines);
        break;
      case Data::none:
        break;
    }
  }

  // An element's nodes go on over lines until there are enough; of a type that is not known, while a line ends in a
  // comma.
  void takeElement(std::string_view line, LineReader& lines) {
    const auto commas = static_cast<int>(std::count(line.begin(), line.end(), ','));
    int nodes = line.back() == ',' ? commas : commas + 1;
    if (missingNodes_ == 0) {
      const int element = labelFrom(line.substr(0, line.find(',')), lines);
      deck_.elementLabels.push_back(element);
      deck_.typeOfElement.push_back(type_);
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

  void takeMembers(const DeckSets& sets, std::string_view line, LineReader& lines) {
    if (generate_) {
      DeckSets::addRange(*set_, line, lines);
    } else {
      sets.addMembers(*set_, line, lines, warn_);
    }
  }

  std::filesystem::path directory_;
  const WarningSink& warn_;
  Deck deck_;
  DeckSets nodeSets_;
  DeckSets elementSets_;
  std::set<std::string> openFiles_;
  std::map<std::string, int> nodesOfUserType_;
  Data data_ = Data::none;
  DeckSet* set_ = nullptr;  // the set that the data lines belong to
  bool generate_ = false;
  int type_ = 0;
  int nodesPerElement_ = 0;
  int missingNodes_ = 0;
};

}  // namespace

Deck readDeck(const std::string& path, const WarningSink& warn) {
  DeckReader reader(path, warn);
  reader.readFile(path);
  return reader.finish();
}

}  // namespace importers::calculix
