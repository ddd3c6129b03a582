#include "importers/calculix/run_outline.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <tuple>

#include "importers/calculix/printed_mass.h"

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
    if (contents_.isCutOff) return steps;
    for (std::size_t step = 1; step <= deck_.procedures.size(); ++step) steps.insert(static_cast<int>(step));
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
    for (const MappedField& field : block.fields) {
      const RowsId id{step, fieldOf(step, field.name, block.block, field.info), frame};
      addRows(id, block.rows);
      (block.isPrinted ? plan_.tables : plan_.results)[block.ordinal].push_back({&field, id});
      if (!block.isPrinted) byName_[{block.frame, field.name}] = {&block, &field};
    }
  }

  void addPeaks() {
    for (const auto& [key, real] : byName_) {
      const auto imaginary = byName_.find({key.first, key.second + "_IM"});
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
      kind.set = table.head.set;
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

}  // namespace importers::calculix
