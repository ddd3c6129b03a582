#include "importers/vtk/vtk_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "importers/run/sink.h"
#include "importers/vtk/array_reader.h"
#include "importers/vtk/field_plan.h"
#include "importers/vtk/frame_rows.h"
#include "importers/vtk/mesh.h"
#include "importers/vtk/run_frames.h"
#include "importers/vtk/run_sets.h"

namespace importers::vtk {

namespace {

using odbstore::Position;

// A frame in its step.
struct Place {
  std::size_t step = 0;
  std::size_t frame = 0;
};

class VtkSource : public Source {
 public:
  VtkSource(const VtkRun& run, const WarningSink& warn) : run_(run), warn_(onceOnly(warn)) {}

  Outline outline() override {
    frames_ = readRun(run_.results, run_.isSeries, run_.isStrict, warn_);
    for (const ImportError& damage : frames_.damage) complain(damage, "; the frame is left out");
    fillTimes();
    offerMore();
    return makeOutline();
  }

  void deliver(const Choice& /*choice*/, Sink& sink, const ProgressSink& progress) override {
    const std::uint64_t all = 2 * bytesOfAll();
    std::uint64_t done = 0;
    Mesh mesh;
    RunSets sets(frames_, run_.idArrays, run_.results);
    std::vector<std::size_t> gridOf;
    for (const RunFrame& frame : frames_.frames) {
      const std::size_t before = mesh.grids();
      gridOf.push_back(mesh.add(frame));
      if (mesh.grids() > before) sets.take(frame, mesh.grid(before));
      if (progress) progress(done += bytesOf(frame), all);
    }
    if (mesh.grids() > 1) {
      warn_(base::note({run_.results},
                       fmt::format("the mesh changes in the run: {} meshes are imported, each with labels "
                                   "of its own",
                                   mesh.grids())));
    }
    sink.nodes(mesh.nodes(), mesh.coordinates(), {run_.results});
    for (const ElementGroup* const group : mesh.groups()) sink.elements(*group, {run_.results});
    mesh.dropElements();
    sets.deliver(sink);
    for (std::size_t frame = 0; frame < frames_.frames.size(); ++frame) {
      deliverFrame(frame, mesh.grid(gridOf[frame]), sink);
      if (progress) progress(done += bytesOf(frames_.frames[frame]), all);
    }
    deliverHistories(sink);
  }

  bool leaveOutDamage(Outline& outline) override {
    if (run_.isStrict) return false;
    const std::size_t before = frames_.frames.size();
    bool isAny = false;
    std::erase_if(frames_.frames, [&](RunFrame& frame) {
      const std::optional<ImportError> damage = damageOfMesh(frame);
      if (damage) {
        complain(*damage, "; the frame is left out");
        if (&frame == &frames_.frames[before - 1]) frames_.endsWithDamage = true;
        return true;
      }
      isAny = leaveOutArrays(frame) || isAny;
      return false;
    });
    if (frames_.frames.empty() || (!isAny && frames_.frames.size() == before)) return false;
    outline = makeOutline();
    return true;
  }

 private:
  void complain(const ImportError& error, const char* more) const {
    if (run_.isStrict) throw error;
    warn_(base::warning(error.place(), error.reason() + more));
  }

  static std::uint64_t bytesOf(const RunFrame& frame) {
    std::uint64_t bytes = 0;
    for (const GridFile& file : frame.files) bytes += file.bytes;
    return bytes;
  }

  std::uint64_t bytesOfAll() const {
    std::uint64_t bytes = 0;
    for (const RunFrame& frame : frames_.frames) bytes += bytesOf(frame);
    return bytes;
  }

  // Frames of which no file says the time are counted from 0, as viewers do.
  void fillTimes() {
    double number = 0;
    for (RunFrame& frame : frames_.frames) {
      if (!frame.time) frame.time = number;
      ++number;
    }
  }

  void offerMore() const {
    if (run_.idArrays.empty()) {
      const std::vector<std::string> arrays = idArraysOf(frames_);
      if (!arrays.empty()) {
        warn_(
            base::note({run_.results}, fmt::format("--sets-from NAME makes element sets of the values of a cell array; "
                                                   "there {} {}",
                                                   arrays.size() == 1 ? "is" : "are", listed(arrays))));
      }
    }
    if (run_.isSeries || frames_.frames.size() != 1 || frames_.frames.front().files.size() != 1) return;
    std::size_t others = 0;
    try {
      others = seriesOf(run_.results).size();
    } catch (const ImportError&) {
      return;
    }
    if (others < 2) return;
    warn_(base::note({run_.results},
                     fmt::format("the file is one of a numbered series of {}; --series imports all of them", others)));
  }

  Outline makeOutline() {
    plans_ = planFields(frames_, run_.shapes, warn_);
    places_.clear();
    Outline outline;
    const Grid& first = frames_.frames.front().files.front().grid;
    outline.title = first.title;
    outline.producer = "VTK";
    outline.form = frames_.form;
    addSteps(outline);
    addFields(outline);
    addTables(outline);
    countMesh(outline);
    RunSets(frames_, run_.idArrays, run_.results).addTo(outline);
    if (frames_.endsWithDamage) {
      const Place& last = places_.back();
      outline.truncatedAfter =
          fmt::format("step {}, time {:.6g}", last.step + 1, outline.steps[last.step].frames[last.frame].value);
    }
    return outline;
  }

  // A time that goes backwards begins a step.
  void addSteps(Outline& outline) {
    std::optional<double> last;
    for (const RunFrame& frame : frames_.frames) {
      if (!last || *frame.time < *last) {
        OutlineStep& step = outline.steps.emplace_back();
        step.number = static_cast<int>(outline.steps.size());
        step.name = fmt::format("Step-{}", step.number);
      }
      last = frame.time;
      std::vector<odbstore::FrameInfo>& frames = outline.steps.back().frames;
      const int number = static_cast<int>(frames.size()) + 1;
      places_.push_back({outline.steps.size() - 1, frames.size()});
      frames.push_back({number, *frame.time, fmt::format("Increment {}: Step Time = {:.6g}", number, *frame.time)});
    }
  }

  void addFields(Outline& outline) {
    fieldsOf_.assign(outline.steps.size(), {});
    for (std::size_t plan = 0; plan < plans_.size(); ++plan) {
      for (std::size_t frame = 0; frame < frames_.frames.size(); ++frame) {
        const std::size_t rows = countRows(frames_.frames[frame], plans_[plan]);
        if (rows == 0) continue;
        const auto [step, place] = places_[frame];
        std::vector<std::size_t>& fields = fieldsOf_[step];
        if (fields.empty() || fields.back() != plan) {
          fields.push_back(plan);
          outline.steps[step].fields.push_back(fieldOf(plans_[plan]));
        }
        outline.steps[step].fields.back().frames.push_back({place, rows, 1});
      }
    }
  }

  static OutlineField fieldOf(const FieldPlan& plan) {
    OutlineField field;
    field.name = plan.name;
    field.source = plan.source;
    field.info = plan.meaning.info;
    field.standardName = plan.meaning.standardName;
    field.position = plan.position;
    return field;
  }

  void addTables(Outline& outline) const {
    for (std::size_t frame = 0; frame < frames_.frames.size(); ++frame) {
      std::vector<OutlineTable>& tables = outline.steps[places_[frame].step].tables;
      for (const FieldValue& value : frames_.frames[frame].values) {
        const auto isSame = [&](const OutlineTable& table) { return table.source == value.name; };
        const auto known = std::find_if(tables.begin(), tables.end(), isSame);
        if (known == tables.end()) {
          tables.push_back({value.name, "", 1, 1});
        } else {
          ++known->tables;
        }
      }
    }
  }

  // As far as it can be told without reading cells: frames whose grids have the same numbers of points and cells have
  // one mesh.
  void countMesh(Outline& outline) const {
    std::set<std::vector<std::uint64_t>> known;
    for (const RunFrame& frame : frames_.frames) {
      std::vector<std::uint64_t> sizes;
      std::uint64_t nodes = 0;
      std::uint64_t elements = 0;
      for (const GridFile& file : frame.files) {
        for (const Piece& piece : file.grid.pieces) {
          sizes.insert(sizes.end(), {piece.points, piece.cells, piece.copies});
          nodes += piece.points;
          elements += piece.cells - piece.copies;
        }
      }
      if (!known.insert(std::move(sizes)).second) continue;
      outline.nodes += nodes;
      outline.elements += elements;
    }
  }

  void deliverFrame(std::size_t number, const GridOfFrames& grid, Sink& sink) {
    const RunFrame& frame = frames_.frames[number];
    const auto [step, place] = places_[number];
    for (std::size_t field = 0; field < fieldsOf_[step].size(); ++field) {
      const FieldPlan& plan = plans_[fieldsOf_[step][field]];
      const RowsId id{step, field, place};
      if (!sink.takes(id) || countRows(frame, plan) == 0) continue;
      const std::vector<int> labels = labelsOf(frame, grid, plan);
      const bool isNodal = plan.position == Position::nodal;
      const RowLabels at(isNodal ? labels : std::span<const int>(), isNodal ? std::span<const int>() : labels, {});
      if (isNodal && plan.columns.size() == 1) {
        readRows(frame, grid, plan, doubles_);
        sink.rows(id, plan.position, at, std::span<const double>(doubles_), {frame.path});
      } else {
        readRows(frame, grid, plan, floats_);
        sink.rows(id, plan.position, at, std::span<const float>(floats_), {frame.path});
      }
    }
  }

  // Time and value of each frame that has the number.
  void deliverHistories(Sink& sink) const {
    std::map<std::pair<std::size_t, std::string>, odbstore::HistorySamples> histories;
    for (std::size_t frame = 0; frame < frames_.frames.size(); ++frame) {
      for (const FieldValue& value : frames_.frames[frame].values) {
        odbstore::HistorySamples& samples = histories[{places_[frame].step, value.name}];
        samples.numbers.push_back(static_cast<float>(*frames_.frames[frame].time));
        samples.numbers.push_back(static_cast<float>(value.value));
        ++samples.samples;
        samples.width = 2;
      }
    }
    odbstore::HistoryRegionInfo region;
    region.description = "Whole Model";
    for (const auto& [key, samples] : histories) {
      if (sink.takesStep(key.first)) sink.history(key.first, "Whole Model", region, key.second, samples);
    }
  }

  static std::optional<ImportError> damageOfMesh(const RunFrame& frame) {
    try {
      Mesh mesh;
      mesh.add(frame);
      return std::nullopt;
    } catch (const ImportError& error) {
      return error;
    }
  }

  // Whether any had to be.
  bool leaveOutArrays(RunFrame& frame) const {
    bool isAny = false;
    for (GridFile& file : frame.files) {
      const InputFile input(file.path);
      for (Piece& piece : file.grid.pieces) {
        for (std::vector<StoredArray>* const arrays : {&piece.pointData, &piece.cellData}) {
          const auto removed = std::erase_if(*arrays, [&](const StoredArray& array) {
            const std::optional<ImportError> damage = damageOf(input, array);
            if (damage) complain(*damage, "; it is left out");
            return damage.has_value();
          });
          isAny = isAny || removed > 0;
        }
      }
    }
    return isAny;
  }

  static std::optional<ImportError> damageOf(const InputFile& file, const StoredArray& array) {
    try {
      ArrayReader reader(file, array);
      std::vector<double> tile(std::min<std::uint64_t>(array.numbers(), std::uint64_t{1} << 15U));
      for (std::uint64_t left = array.numbers(); left > 0; left -= std::min<std::uint64_t>(left, tile.size())) {
        reader.read(std::span(tile).first(std::min<std::uint64_t>(left, tile.size())));
      }
      return std::nullopt;
    } catch (const ImportError& error) {
      return error;
    }
  }

  VtkRun run_;
  const WarningSink warn_;
  RunFrames frames_;
  std::vector<FieldPlan> plans_;
  std::vector<Place> places_;                       // of each frame
  std::vector<std::vector<std::size_t>> fieldsOf_;  // of each step, in the order of its outline: places in plans_
  std::vector<double> doubles_;
  std::vector<float> floats_;
};

}  // namespace

std::unique_ptr<Source> openVtk(const VtkRun& run, const WarningSink& warn) {
  return std::make_unique<VtkSource>(run, warn);
}

}  // namespace importers::vtk
