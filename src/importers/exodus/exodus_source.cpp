#include "importers/exodus/exodus_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <regex>

#include "base/control_characters.h"
#include "importers/exodus/exodus_steps.h"
#include "importers/run/sink.h"

namespace importers::exodus {

namespace {

constexpr const char* kGlobals = "vals_glo_var";
constexpr const char* kGlobalRegion = "Global variables";

class ExodusSource : public Source {
 public:
  ExodusSource(ExodusRun run, const WarningSink& warn) : run_(std::move(run)), warn_(warn), file_(run_.results) {}

  Outline outline() override {
    model_ = readModel(file_, warn_);
    readTimes();
    if (run_.withSets) sets_ = namedMembersOf(file_, model_, warn_);
    plans_ = planFields(file_, model_, times_.size(), run_.fields, warn_);
    globals_ = file_.variable(kGlobals) == nullptr ? std::vector<std::string>() : file_.names("name_glo_var");
    warnOfPart();
    warnOfSeries();
    if (plans_.fields.empty() && globals_.empty()) warn_(base::warning(file_.place(), "the file holds no results"));
    return madeOutline();
  }

  void deliver(const Choice& choice, Sink& sink, const ProgressSink& progress) override {
    deliverMesh(sink);
    const std::uint64_t all = std::max<std::uint64_t>(1, bytesOf(choice));
    std::uint64_t done = 0;
    for (std::size_t step = 0; step < steps_.size(); ++step) {
      for (std::size_t frame = 0; frame < steps_[step].count; ++frame) {
        for (std::size_t field = 0; field < plans_.fields.size(); ++field) {
          const RowsId id = {step, field, frame};
          if (!choice.takes(id)) continue;
          deliverRows(id, sink);
          progress(done += bytesOf(plans_.fields[field]), all);
        }
      }
      if (sink.takesStep(step)) deliverGlobals(step, sink);
    }
  }

  bool leaveOutDamage(Outline& outline) override {
    if (run_.isStrict) return false;
    bool isAny = std::erase_if(plans_.fields, [&](const FieldPlan& plan) { return isDamaged(plan); }) > 0;
    try {
      if (!globals_.empty()) file_.reals(kGlobals);
    } catch (const ImportError& error) {
      leaveOut("the global variables are", error);
      globals_.clear();
      isAny = true;
    }
    outline = madeOutline();
    return isAny;
  }

 private:
  void readTimes() {
    times_ = file_.reals("time_whole");
    steps_ = stepsOf(times_);
    const netcdf::Variable* const time = file_.variable("time_whole");
    if (time == nullptr || !time->hasRecords) return;
    const std::uint64_t declared = file_.description().dimensions[time->dimensions[0]].length;
    if (declared <= times_.size()) return;
    truncatedAfter_ = steps_.empty() ? "the model" : fmt::format("step {}, time {:.6g}", steps_.size(), times_.back());
    // A classic file in which the number of records is still to be written, all bits 1.
    constexpr std::uint64_t kOpenEnd = 0xFFFFFFFF;
    const std::string what = declared == kOpenEnd ? "was not finished" : "is cut off";
    const std::string of = declared == kOpenEnd ? "" : fmt::format(" of its {}", declared);
    complain(fmt::format("the file {}: {}{} time steps are complete, what is imported ends after {}", what,
                         times_.size(), of, truncatedAfter_));
  }

  void complain(const std::string& reason) const {
    if (run_.isStrict) throw ImportError(file_.place(), reason);
    warn_(base::warning(file_.place(), reason));
  }

  // A model that was split for many processors has a file for each.
  void warnOfPart() const {
    static const std::regex part(R"(.*\.(\d+)\.(\d+))");
    std::smatch found;
    const std::string name = std::filesystem::path(run_.results).filename().string();
    const std::uint64_t processors = file_.length("num_processors");
    const bool isPart = std::regex_match(name, found, part);
    if (processors <= 1 && !isPart) return;
    complain(fmt::format(
        "this is one part of a model that was split{}; extremes are those of the part. \"epu\" joins the parts",
        isPart ? fmt::format(", part {} of {}", found.str(2), found.str(1)) : ""));
  }

  // Programs that change the mesh on their way begin a new file then.
  void warnOfSeries() const {
    static const std::regex member(R"((.*)-s\d{3,})");
    std::error_code ignored;
    const bool isSeries =
        std::regex_match(run_.results, member) || std::filesystem::exists(run_.results + "-s002", ignored);
    if (!isSeries) return;
    warn_(base::note(file_.place(),
                     "this file is one of a series (-s002, -s003, ...), each with a mesh of its own; "
                     "the others are imported by themselves"));
  }

  Outline madeOutline() const {
    Outline outline;
    outline.title = storable(model_.title);
    outline.producer = storable(model_.producer);
    outline.form = file_.description().form;
    outline.nodes = model_.nodeLabels.size();
    outline.elements = model_.elementLabels.size();
    outline.truncatedAfter = truncatedAfter_;
    for (const NamedMembers& set : sets_) {
      outline.sets.push_back({set.kind, set.name, set.isOfSurface, set.labels.size(), file_.place()});
    }
    outline.steps = outlineSteps(steps_, times_, outline.title);
    for (std::size_t step = 0; step < steps_.size(); ++step) addFields(outline.steps[step]);
    return outline;
  }

  static std::string storable(std::string text) {
    for (char& c : text) {
      if (base::hasControlCharacter(std::string(1, c))) c = ' ';
    }
    return text;
  }

  void addFields(OutlineStep& step) const {
    for (const FieldPlan& plan : plans_.fields) {
      OutlineField& field = step.fields.emplace_back(plan.field);
      for (std::size_t frame = 0; frame < step.frames.size(); ++frame) field.frames.push_back({frame, plan.rows, 1});
    }
    if (!globals_.empty()) step.tables.push_back({kGlobalRegion, "", globals_.size(), step.frames.size()});
  }

  void deliverMesh(Sink& sink) {
    sink.nodes(model_.nodeLabels, coordinatesOf(file_, model_, warn_), file_.place());
    for (const Block& block : model_.blocks) {
      if (block.hasMesh()) sink.elements(groupOf(block, model_), file_.place(block.name));
    }
    for (std::size_t i = 0; i < sets_.size(); ++i) sink.set(i, sets_[i].labels);
  }

  void deliverRows(const RowsId& id, Sink& sink) {
    const FieldPlan& plan = plans_.fields[id.field];
    const std::size_t record = steps_[id.step].first + id.frame;
    if (plan.isNodalScalar) {
      deliverRows(id, plan, record, sink, doubles_);
    } else {
      deliverRows(id, plan, record, sink, floats_);
    }
  }

  template <typename Number>
  void deliverRows(const RowsId& id, const FieldPlan& plan, std::size_t record, Sink& sink,
                   std::vector<Number>& values) {
    read(plan, record, values);
    const RowPlaces& at = plans_.places[plan.places];
    sink.rows(id, at.position, RowLabels(at.nodes, at.elements, at.points), std::span<const Number>(values),
              file_.place(plan.field.source));
  }

  template <typename Number>
  void read(const FieldPlan& plan, std::size_t record, std::vector<Number>& values) {
    if (plan.rows * plan.components > file_.mostBytes() / sizeof(double)) {
      throw ImportError(file_.place(plan.field.source), "has more values than a file of that size can hold");
    }
    values.resize(plan.rows * plan.components);
    std::size_t begin = 0;
    for (const FieldPart& part : plan.parts) {
      const std::size_t count = part.entities * part.points * plan.components;
      readPart(file_, part, plan.components, record, std::span(values).subspan(begin, count));
      begin += count;
    }
  }

  void deliverGlobals(std::size_t step, Sink& sink) {
    if (globals_.empty()) return;
    const std::vector<double> values = file_.reals(kGlobals);
    const std::size_t width = values.size() / std::max<std::size_t>(1, times_.size());
    for (std::size_t v = 0; v < std::min(globals_.size(), width); ++v) {
      odbstore::HistorySamples samples = {{}, static_cast<std::int64_t>(steps_[step].count), 2};
      for (std::size_t i = 0; i < steps_[step].count; ++i) {
        const std::size_t record = steps_[step].first + i;
        samples.numbers.push_back(static_cast<float>(times_[record]));
        samples.numbers.push_back(static_cast<float>(values[record * width + v]));
      }
      const std::string name = globals_[v].empty() ? fmt::format("variable_{}", v + 1) : storable(globals_[v]);
      sink.history(step, kGlobalRegion, {}, name, samples);
    }
  }

  bool isDamaged(const FieldPlan& plan) {
    try {
      for (std::size_t record = 0; record < times_.size(); ++record) read(plan, record, floats_);
      return false;
    } catch (const ImportError& error) {
      leaveOut(fmt::format("the field {} is", plan.field.source), error);
      return true;
    }
  }

  void leaveOut(const std::string& what, const ImportError& error) const {
    warn_(base::warning(error.place(), fmt::format("{}; {} left out", error.reason(), what)));
  }

  static std::uint64_t bytesOf(const FieldPlan& plan) { return plan.rows * plan.components * sizeof(float); }

  std::uint64_t bytesOf(const Choice& choice) const {
    std::uint64_t bytes = 0;
    for (std::size_t step = 0; step < steps_.size(); ++step) {
      for (std::size_t frame = 0; frame < steps_[step].count; ++frame) {
        for (std::size_t field = 0; field < plans_.fields.size(); ++field) {
          if (choice.takes({step, field, frame})) bytes += bytesOf(plans_.fields[field]);
        }
      }
    }
    return bytes;
  }

  ExodusRun run_;
  const WarningSink& warn_;
  ExodusFile file_;
  Model model_;
  std::vector<double> times_;  // of the complete records
  std::vector<StepRecords> steps_;
  std::vector<NamedMembers> sets_;
  FieldPlans plans_;
  std::vector<std::string> globals_;
  std::string truncatedAfter_;
  std::vector<float> floats_;
  std::vector<double> doubles_;
};

}  // namespace

std::unique_ptr<Source> openExodus(const ExodusRun& run, const WarningSink& warn) {
  return std::make_unique<ExodusSource>(run, warn);
}

}  // namespace importers::exodus
