#include "importers/calculix/deck.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <set>

#include "importers/calculix/deck_keyword.h"
#include "importers/calculix/deck_mesh.h"
#include "importers/calculix/deck_sets.h"
#include "importers/calculix/deck_surfaces.h"
#include "importers/line_reader.h"
#include "importers/text_fields.h"

namespace importers::calculix {

namespace {

// Files include each other only so deep.
constexpr std::size_t kDeepestInclude = 32;

// What tells files apart whatever they are called; their name where it cannot be found out.
std::string identityOf(const std::filesystem::path& path) {
  std::error_code failed;
  const std::filesystem::path canonical = std::filesystem::weakly_canonical(path, failed);
  return failed ? path.string() : canonical.string();
}

class DeckReader {
 public:
  DeckReader(const std::string& path, const WarningSink& warn, DeckDetail detail)
      : directory_(std::filesystem::path(path).parent_path()),
        warn_(warn),
        mesh_(deck_.mesh, detail == DeckDetail::mass),
        withSections_(detail == DeckDetail::mass) {}

  void readFile(const std::string& path) {
    LineReader lines(path);
    const std::string identity = identityOf(path);
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
    surfaces_.addSets(deck_, warn_);
    deck_.materials = sections_.finishMaterials();
    deck_.sections = sections_.finishSections();
    deck_.nodalThicknesses = sections_.finishNodalThicknesses();
    deck_.steps = steps_.finish();
    return std::move(deck_);
  }

 private:
  enum class Data { none, heading, stepTitle, nodes, elements, nodeSet, elementSet, section, surface };

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
    steps_.start(keyword);
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
      mesh_.startElements(keyword, lines);
      data_ = Data::elements;
      if (const auto set = keyword.value("ELSET")) set_ = &elementSets_.open(*set, lines);
    } else if (keyword.name == "USERELEMENT") {
      mesh_.defineUserElement(keyword, lines);
    } else if (keyword.name == "NSET") {
      startSet(keyword, nodeSets_, Data::nodeSet, lines);
    } else if (keyword.name == "ELSET") {
      startSet(keyword, elementSets_, Data::elementSet, lines);
    } else if (keyword.name == "SURFACE") {
      surfaces_.start(keyword, lines);
      data_ = Data::surface;
    } else if (withSections_ && sections_.start(keyword, lines)) {
      data_ = Data::section;
    }
  }

  void include(const Keyword& keyword, LineReader& lines) {
    const auto name = keyword.value("INPUT");
    if (!name) lines.fail("*INCLUDE names no file");
    std::filesystem::path path = std::filesystem::path(lines.path()).parent_path() / *name;
    // Names that are too long exist no more than others.
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) path = directory_ / *name;
    if (!std::filesystem::exists(path, ignored)) lines.fail(fmt::format("the included file {} does not exist", *name));
    if (openFiles_.contains(identityOf(path))) {
      lines.fail(fmt::format("{} includes itself", *name));
    }
    if (openFiles_.size() >= kDeepestInclude) lines.fail("files include each other too deep");
    readFile(path.string());
  }

  void startSet(const Keyword& keyword, DeckSets& sets, Data data, LineReader& lines) {
    const auto name = keyword.value(keyword.name);
    if (!name) lines.fail(fmt::format("*{} names no set", keyword.name));
    set_ = &sets.open(*name, lines);
    generate_ = keyword.has("GENERATE");
    data_ = data;
  }

  void takeData(std::string_view line, LineReader& lines) {
    steps_.takeData(line);
    switch (data_) {
      case Data::heading:
        if (deck_.heading.empty()) deck_.heading = storableText(line);
        break;
      case Data::stepTitle:
        deck_.stepTitles.back() = storableText(line);
        data_ = Data::none;
        break;
      case Data::nodes:
        takeNode(line, lines);
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
      case Data::section:
        sections_.takeData(line, lines);
        break;
      case Data::surface:
        surfaces_.takeData(line, lines);
        break;
      case Data::none:
        break;
    }
  }

  void takeNode(std::string_view line, const LineReader& lines) {
    const int label = mesh_.takeNode(line, lines);
    if (set_ != nullptr) set_->labels.push_back(label);
  }

  void takeElement(std::string_view line, const LineReader& lines) {
    const std::optional<int> label = mesh_.takeElement(line, lines);
    if (label && set_ != nullptr) set_->labels.push_back(*label);
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
  DeckMeshReader mesh_;
  bool withSections_;
  DeckSections sections_;
  DeckSurfaces surfaces_;
  DeckStepReader steps_;
  Data data_ = Data::none;
  DeckSet* set_ = nullptr;  // the set that the data lines belong to
  bool generate_ = false;
};

}  // namespace

std::span<const int> DeckMesh::nodesOf(std::size_t element) const {
  const bool isLast = element + 1 == firstNode.size();
  const std::size_t end = isLast ? elementNodes.size() : firstNode[element + 1];
  return std::span(elementNodes).subspan(firstNode[element], end - firstNode[element]);
}

void DeckMesh::dropNodes() {
  elementNodes = {};
  firstNode = {};
  nodeLabels = {};
  coordinates = {};
}

Deck readDeck(const std::string& path, const WarningSink& warn, DeckDetail detail) {
  DeckReader reader(path, warn, detail);
  reader.readFile(path);
  return reader.finish();
}

}  // namespace importers::calculix
