#include "importers/calculix/deck/deck.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "base/give_back.h"
#include "importers/calculix/deck/deck_includes.h"
#include "importers/calculix/deck/deck_keyword.h"
#include "importers/calculix/deck/deck_labels.h"
#include "importers/calculix/deck/deck_mesh.h"
#include "importers/calculix/deck/deck_sets.h"
#include "importers/calculix/deck/deck_surfaces.h"
#include "importers/input/line_reader.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

class DeckReader {
 public:
  DeckReader(const std::string& path, const WarningSink& warn, const DeckOptions& options)
      : warn_(warn),
        isStrict_(options.isStrict),
        includes_(path),
        mesh_(deck_.mesh, options.detail == DeckDetail::mass),
        sections_(options.detail == DeckDetail::mass) {}

  void readFile(const std::string& path) {
    LineReader lines(path);
    bytesOfDeck_ = std::max(bytesOfDeck_, lines.size());
    std::string_view line;
    while (lines.next(line)) {
      line = trimmed(line);
      if (line.empty() || isComment(line)) continue;
      if (line.find('\0') != std::string_view::npos) lines.fail("not a text file");
      if (isKeyword(line)) {
        startKeyword(joined(lines, line), lines);
      } else {
        takeData(line, lines);
      }
    }
  }

  Deck finish() {
    finishSets();
    deck_.materials = sections_.finishMaterials();
    deck_.sections = sections_.finishSections();
    deck_.nodalThicknesses = sections_.finishNodalThicknesses();
    deck_.localAxes = localAxes_.finish(deck_);
    deck_.steps = steps_.finish();
    return std::move(deck_);
  }

 private:
  enum class Data { none, heading, stepTitle, nodes, elements, nodeSet, elementSet, section, surface, fileRequest };

  // A keyword line that ends with a comma continues on the next line.
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
      // The beginning of the file continues what came before it.
      include(keyword, lines);
      return;
    }
    data_ = localAxes_.start(keyword) ? Data::fileRequest : Data::none;
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
      if (const auto name = keyword.spelled("NSET")) set_ = &nodeSets_.open(*name, lines, warn_);
    } else if (keyword.name == "ELEMENT") {
      mesh_.startElements(keyword, lines);
      data_ = Data::elements;
      if (const auto set = keyword.spelled("ELSET")) set_ = &elementSets_.open(*set, lines, warn_);
    } else if (keyword.name == "USERELEMENT") {
      mesh_.defineUserElement(keyword, lines);
    } else if (keyword.name == "NSET") {
      startSet(keyword, nodeSets_, Data::nodeSet, lines);
    } else if (keyword.name == "ELSET") {
      startSet(keyword, elementSets_, Data::elementSet, lines);
    } else if (keyword.name == "SURFACE") {
      surfaces_.start(keyword, lines);
      data_ = Data::surface;
    } else if (keyword.name == "RESTART" && keyword.has("READ")) {
      restart_ = deck_.mesh.placeOfMissing = lines.place();
    } else if (keyword.name == "CYCLICSYMMETRYMODEL") {
      takeSectors(keyword, lines);
    } else if (sections_.start(keyword, lines)) {
      data_ = Data::section;
    }
  }

  // Several models may have different numbers of copies.
  void takeSectors(const Keyword& keyword, const LineReader& lines) {
    const std::optional<int> sectors = integerFrom(keyword.value("NGRAPH").value_or("1"));
    if (!sectors || *sectors <= (deck_.sectorCopies ? deck_.sectorCopies->sectors : 1)) return;
    deck_.sectorCopies = DeckSectorCopies{lines.place(), *sectors};
  }

  void include(const Keyword& keyword, LineReader& lines) {
    const auto name = keyword.value("INPUT");
    if (!name) lines.fail("*INCLUDE names no file");
    const std::optional<std::string> path = includes_.find(*name, lines);
    if (!path) {
      const std::string text = fmt::format("the included file {} does not exist", storableText(*name));
      if (isStrict_) lines.fail(text);
      deck_.mesh.placeOfMissing = lines.place();
      warn_(base::warning(deck_.mesh.placeOfMissing, text));
      return;
    }
    includes_.enter(*path, *name, lines);
    readIncluded(*path, *name, lines);
    includes_.leave(*path);
  }

  // A file that cannot be read is an error of the line that asks for it.
  void readIncluded(const std::string& path, const std::string& name, const LineReader& from) {
    try {
      readFile(path);
    } catch (const ImportError& error) {
      if (error.place().file != path || error.place().line > 0) throw;
      from.fail(fmt::format("the included file {}: {}", storableText(name), error.reason()));
    }
  }

  void startSet(const Keyword& keyword, DeckSets& sets, Data data, LineReader& lines) {
    const auto name = keyword.spelled(keyword.name);
    if (!name) lines.fail(fmt::format("*{} names no set", keyword.name));
    set_ = &sets.open(*name, lines, warn_);
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
      case Data::fileRequest:
        localAxes_.takeData(line);
        break;
      case Data::none:
        break;
    }
  }

  void takeNode(std::string_view line, const LineReader& lines) {
    const int label = mesh_.takeNode(line, lines);
    if (set_ != nullptr) nodeSets_.addLabel(*set_, label);
  }

  void takeElement(std::string_view line, const LineReader& lines) {
    const std::optional<int> label = mesh_.takeElement(line, lines);
    if (label && set_ != nullptr) elementSets_.addLabel(*set_, *label);
  }

  void takeMembers(DeckSets& sets, std::string_view line, LineReader& lines) {
    if (generate_) {
      sets.addRange(*set_, line, lines);
    } else {
      sets.addMembers(*set_, line, lines, warn_);
    }
  }

  void finishSets() {
    const DeckMesh& mesh = deck_.mesh;
    if (restart_.isKnown() && mesh.elementLabels.empty()) {
      warn_(base::warning(restart_,
                          "the deck restarts an earlier run and has no mesh, so the sets of that run are unknown"));
    }
    LabelBudget budget(bytesOfDeck_ + includes_.bytes());
    const auto labelsOf = [&](const std::vector<int>& all) { return MeshLabels(all, mesh.isWhole() && !all.empty()); };
    deck_.nodeSets = nodeSets_.finish(labelsOf(mesh.nodeLabels), budget, warn_);
    deck_.elementSets = elementSets_.finish(labelsOf(mesh.elementLabels), budget, warn_);
    surfaces_.addSets(deck_, budget, warn_);
  }

  const WarningSink& warn_;
  bool isStrict_;
  Deck deck_;
  DeckIncludes includes_;
  std::uint64_t bytesOfDeck_ = 0;
  int setCount_ = 0;
  DeckSets nodeSets_{odbstore::SetKind::node, setCount_};
  DeckSets elementSets_{odbstore::SetKind::element, setCount_};
  DeckMeshReader mesh_;
  DeckSections sections_;
  DeckSurfaces surfaces_{setCount_};
  DeckLocalAxesReader localAxes_;
  SourcePlace restart_;  // where the deck reads the state of an earlier run
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

void DeckMesh::dropCoordinates() { base::giveBack(coordinates); }

void DeckMesh::dropNodes() {
  dropCoordinates();
  base::giveBack(elementNodes);
  base::giveBack(firstNode);
  base::giveBack(nodeLabels);
}

std::vector<const DeckSet*> Deck::setsInOrder() const {
  std::vector<const DeckSet*> sets;
  for (const auto& [name, set] : nodeSets) sets.push_back(&set);
  for (const auto& [name, set] : elementSets) sets.push_back(&set);
  std::sort(sets.begin(), sets.end(), [](const DeckSet* a, const DeckSet* b) { return a->order < b->order; });
  return sets;
}

const DeckSet* Deck::setPrintedAs(std::string_view name, odbstore::SetKind kind) const {
  const std::string canonical = canonicalName(name);
  const bool isOfNodes = kind == odbstore::SetKind::node;
  for (const auto* sets : {isOfNodes ? &nodeSets : &elementSets, isOfNodes ? &elementSets : &nodeSets}) {
    if (const auto known = sets->find(canonical); known != sets->end()) return &known->second;
  }
  return nullptr;
}

const DeckSet* Deck::surfacePrintedAs(std::string_view name) const {
  const auto surface = setsOfSurfaces.find(canonicalName(name));
  return surface == setsOfSurfaces.end() ? nullptr : setPrintedAs(surface->second, odbstore::SetKind::element);
}

Deck readDeck(const std::string& path, const WarningSink& warn, const DeckOptions& options) {
  DeckReader reader(path, warn, options);
  reader.readFile(path);
  return reader.finish();
}

}  // namespace importers::calculix
