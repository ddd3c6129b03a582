#include "importers/calculix/run_outline.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <set>
#include <tuple>

#include "importers/calculix/dat/printed_mass.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

odbstore::StepInfo infoOf(int step, const Deck& deck, const std::optional<StepMass>& mass) {
  odbstore::StepInfo info;
  const auto place = static_cast<std::size_t>(step) - 1;
  if (step > 0 && place < deck.stepTitles.size()) info.description = deck.stepTitles[place];
  if (!mass) return info;
  info.mass = mass->mass;
  info.massCenter.assign(mass->centre.begin(), mass->centre.end());
  info.inertiaAboutCenter.assign(mass->inertiaAboutCentre.begin(), mass->inertiaAboutCentre.end());
  info.inertiaAboutOrigin.assign(mass->inertiaAboutOrigin.begin(), mass->inertiaAboutOrigin.end());
  return info;
}

constexpr std::string_view kLocalEnding = "_LOCAL";

// The key with which a deck asks for a block; that of the real one for an imaginary part. Empty for blocks without
// axes.
std::string_view requestKey(std::string_view block) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 8> keys = {{{"DISP", "U"},
                                                                                  {"VELO", "V"},
                                                                                  {"FORC", "RF"},
                                                                                  {"FLUX", "HFL"},
                                                                                  {"STRESS", "S"},
                                                                                  {"TOSTRAI", "E"},
                                                                                  {"MESTRAI", "ME"},
                                                                                  {"THSTRAI", "THE"}}};
  const auto found = std::find_if(keys.begin(), keys.end(), [&](const auto& key) {
    return block == key.first || block == std::string(key.first) + "I" || block == std::string(key.first) + "N";
  });
  return found == keys.end() ? std::string_view() : found->second;
}

bool isInLocalAxes(const ContentsBlock& block, const Deck& deck) {
  return !block.isPrinted && deck.localAxes.has(block.step, std::string(requestKey(block.block)));
}

// Of nodes are the vectors but the heat flux, which comes from elements like tensors.
bool isOfNodes(const ContentsBlock& block, const MappedField& field) {
  return !field.isTensor() && field.columns.size() > 1 && requestKey(block.block) != "HFL";
}

// The field of the rows in local axes; imaginary parts keep their ending.
MappedField localField(const MappedField& field) {
  MappedField local = field;
  const std::size_t end =
      field.name.ends_with(kImaginaryEnding) ? field.name.size() - kImaginaryEnding.size() : field.name.size();
  local.name.insert(end, kLocalEnding);
  local.info.description += ", in local axes";
  return local;
}

class OutlineMaker {
 public:
  OutlineMaker(const Contents& contents, const Deck& deck, Plan& plan)
      : contents_(contents), deck_(deck), plan_(plan) {}

  Outline make(bool withMass, const std::optional<StepMass>& mass) {
    outline_.nodes = contents_.nodes.size();
    for (const FrdElementGroup& group : contents_.mesh.groups) outline_.elements += group.labels.size();
    outline_.form = contents_.isBinary ? "binary" : "ASCII";
    addSteps(withMass, mass);
    for (const ContentsBlock& block : contents_.blocks) addBlock(block);
    addPeaks();
    sortFields();
    addTables();
    return std::move(outline_);
  }

 private:
  // The deck's steps are the steps; a run that ended early has only those of which something is known.
  std::set<int> stepNumbers() const {
    std::set<int> steps;
    for (const ContentsBlock& block : contents_.blocks) steps.insert(block.step);
    for (const PrintedTable& table : contents_.printed.tables) {
      if (table.step > 0) steps.insert(table.step);
    }
    // A deck of another run, or of a restart from an unknown step.
    const bool isOfRun =
        std::all_of(steps.begin(), steps.end(), [this](int step) { return deck_.steps.find(step) != nullptr; });
    if (contents_.isCutOff || !isOfRun || !deck_.steps.stepsBefore) return steps;
    for (std::size_t step = 1; step <= deck_.steps.steps.size(); ++step) {
      steps.insert(*deck_.steps.stepsBefore + static_cast<int>(step));
    }
    return steps;
  }

  void addSteps(bool withMass, const std::optional<StepMass>& mass) {
    std::set<FrameNumber> withRows;
    for (const ContentsBlock& block : contents_.blocks) withRows.insert(block.frame);
    for (const int number : stepNumbers()) {
      plan_.steps[number] = outline_.steps.size();
      OutlineStep& step = outline_.steps.emplace_back();
      step.number = number;
      step.name = fmt::format("Step-{}", number);
      step.info = infoOf(number, deck_, mass);
      if (withMass) takePrintedMass(contents_.printed.tables, number, deck_, step.info);
      const auto order = contents_.frames.steps().find(number);
      if (order == contents_.frames.steps().end()) continue;
      for (const FrameNumber frame : order->second) {
        if (!withRows.contains(frame)) continue;
        places_[frame] = step.frames.size();
        step.frames.push_back(contents_.frames[frame].info);
      }
    }
  }

  // The place of a field in its step. Blocks of one name that are described differently are different fields.
  std::size_t fieldOf(std::size_t step, const std::string& name, const std::string& source,
                      const odbstore::FieldInfo& info) {
    std::vector<OutlineField>& fields = outline_.steps[step].fields;
    std::string wanted = name;
    for (int number = 2;; ++number) {
      const auto known =
          std::find_if(fields.begin(), fields.end(), [&](const OutlineField& field) { return field.name == wanted; });
      if (known == fields.end()) break;
      if (known->info == info) return static_cast<std::size_t>(known - fields.begin());
      wanted = fmt::format("{}_{}", name, number);
    }
    fields.push_back({wanted, source, info, false, {}});
    return fields.size() - 1;
  }

  // Tables of a frame need not follow each other.
  void addRows(const RowsId& id, std::size_t rows) {
    std::vector<OutlineRows>& frames = outline_.steps[id.step].fields[id.field].frames;
    const auto at = std::lower_bound(frames.begin(), frames.end(), id.frame,
                                     [](const OutlineRows& known, std::size_t frame) { return known.frame < frame; });
    if (at == frames.end() || at->frame != id.frame) {
      frames.insert(at, {id.frame, rows, 1});
      return;
    }
    at->rows += rows;
    ++at->pieces;
  }

  void addBlock(const ContentsBlock& block) {
    const std::size_t step = plan_.steps.at(block.step);
    const std::size_t frame = places_.at(block.frame);
    const bool isLocal = isInLocalAxes(block, deck_) && hasNodesWithLocalAxes();
    for (const MappedField& field : block.fields) {
      const bool isSplit = isLocal && isOfNodes(block, field);
      const RowsId id{step, fieldOf(step, field.name, block.block, field.info), frame};
      addRows(id, block.rows);
      (block.isPrinted ? plan_.tables : plan_.results)[block.ordinal].push_back(
          {&field, id, isSplit ? RowsAt::otherNodes : RowsAt::allNodes});
      if (isSplit) {
        const MappedField local = localField(field);
        const RowsId ofLocal{step, fieldOf(step, local.name, block.block, local.info), frame};
        addRows(ofLocal, deck_.localAxes.nodes.size());
        plan_.results[block.ordinal].push_back({&field, ofLocal, RowsAt::nodesWithLocalAxes});
      } else if (!block.isPrinted) {
        byName_[{block.frame, field.name}] = {&block, &field};
      }
    }
  }

  bool hasNodesWithLocalAxes() const {
    const std::vector<int>& local = deck_.localAxes.nodes;
    return std::any_of(contents_.nodes.begin(), contents_.nodes.end(),
                       [&](int node) { return std::binary_search(local.begin(), local.end(), node); });
  }

  void addPeaks() {
    for (const auto& [key, real] : byName_) {
      const auto imaginary = byName_.find({key.first, key.second + std::string(kImaginaryEnding)});
      if (imaginary == byName_.end()) continue;
      const std::optional<PeakField> peak = peakOf(*real.second);
      const ContentsBlock& block = *real.first;
      const ContentsBlock& other = *imaginary->second.first;
      if (!peak || block.rows != other.rows || block.ordinal > other.ordinal) continue;
      const std::size_t step = plan_.steps.at(block.step);
      const MappedField scalar = scalarField(peak->name, peak->description, 0);
      const RowsId id{step, fieldOf(step, scalar.name, block.block + ", " + other.block, scalar.info),
                      places_.at(block.frame)};
      outline_.steps[step].fields[id.field].isSpread = peak->kind == PeakKind::mises;
      addRows(id, block.rows);
      plan_.peaks.push_back({*peak, id, block.ordinal, other.ordinal});
    }
  }

  // By name, as the database has them; the plan follows.
  void sortFields() {
    std::vector<std::vector<std::size_t>> moved;
    for (OutlineStep& step : outline_.steps) {
      std::vector<std::size_t> order(step.fields.size());
      for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
      std::sort(order.begin(), order.end(),
                [&](std::size_t a, std::size_t b) { return step.fields[a].name < step.fields[b].name; });
      std::vector<std::size_t>& to = moved.emplace_back(order.size());
      std::vector<OutlineField> sorted;
      for (const std::size_t from : order) {
        to[from] = sorted.size();
        sorted.push_back(std::move(step.fields[from]));
      }
      step.fields = std::move(sorted);
    }
    const auto follow = [&](RowsId& id) { id.field = moved[id.step][id.field]; };
    for (auto* targets : {&plan_.results, &plan_.tables}) {
      for (auto& [ordinal, list] : *targets) {
        for (Target& target : list) follow(target.rows);
      }
    }
    for (PeakTarget& peak : plan_.peaks) follow(peak.rows);
  }

  void addTables() {
    std::map<std::tuple<int, std::string, std::string>, OutlineTable> kinds;
    for (const PrintedTable& table : contents_.printed.tables) {
      if (table.step == 0 || table.format->isMark()) continue;
      OutlineTable& kind = kinds[{table.step, table.head.title, table.head.set}];
      kind.source = table.head.title;
      kind.set = storableText(table.head.set);
      kind.rows = std::max(kind.rows, table.rows);
      ++kind.tables;
    }
    for (auto& [key, kind] : kinds) {
      outline_.steps[plan_.steps.at(std::get<0>(key))].tables.push_back(std::move(kind));
    }
  }

  using Known = std::pair<const ContentsBlock*, const MappedField*>;

  const Contents& contents_;
  const Deck& deck_;
  Plan& plan_;
  Outline outline_;
  std::map<FrameNumber, std::size_t> places_;  // of frames in their steps
  std::map<std::pair<FrameNumber, std::string>, Known> byName_;
};

}  // namespace

Outline outlineOf(const Contents& contents, const Deck& deck, bool withMass, const std::optional<StepMass>& mass,
                  Plan& plan) {
  plan = {};
  return OutlineMaker(contents, deck, plan).make(withMass, mass);
}

std::vector<std::string> mixedAxes(const Contents& contents, const Deck& deck) {
  std::vector<std::string> texts;
  if (deck.localAxes.elements.empty()) return texts;
  std::set<std::pair<int, std::string>> said;
  for (const ContentsBlock& block : contents.blocks) {
    if (!isInLocalAxes(block, deck)) continue;
    for (const MappedField& field : block.fields) {
      if (isOfNodes(block, field) || !said.emplace(block.step, field.name).second) continue;
      texts.push_back(
          fmt::format("in Step-{} the components of {} are in local axes for the elements of {} (GLOBAL=NO), "
                      "and mixed with others at nodes that they share",
                      block.step, field.name, listed(deck.localAxes.orientedSets)));
    }
  }
  return texts;
}

}  // namespace importers::calculix
