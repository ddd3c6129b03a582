#include "importers/listed/listed_importer.h"

#include <algorithm>
#include <functional>
#include <sstream>

#include "importers/input/line_reader.h"
#include "importers/input/text_fields.h"
#include "importers/run/sink.h"

namespace importers::made_up {

namespace {

constexpr std::string_view kFirstLine = "listed results";

using Words = std::vector<std::string>;

// The lines of a file in words, by turns for the outline and for the rows.
void readLines(const std::string& path, const std::function<void(const Words&, const LineReader&)>& take) {
  LineReader lines(path);
  std::string_view line;
  lines.next(line);
  while (lines.next(line)) {
    std::istringstream text{std::string(line)};
    Words words;
    for (std::string word; text >> word;) words.push_back(word);
    if (!words.empty()) take(words, lines);
  }
}

template <typename Number>
std::vector<Number> numbers(const Words& words, std::size_t from, const LineReader& lines) {
  std::vector<Number> found;
  for (std::size_t i = from; i < words.size(); ++i) {
    const std::optional<double> number = numberFrom(words[i]);
    if (!number) lines.fail("\"" + words[i] + "\" is not a number");
    found.push_back(static_cast<Number>(*number));
  }
  return found;
}

odbstore::FieldType typeOf(std::size_t components) {
  if (components == 6) return odbstore::FieldType::tensor3dFull;
  return components == 3 ? odbstore::FieldType::vector : odbstore::FieldType::scalar;
}

class ListedSource : public Source {
 public:
  ListedSource(std::string path, bool withSets) : path_(std::move(path)), withSets_(withSets) {}

  Outline outline() override {
    readLines(path_, [this](const Words& words, const LineReader& lines) { look(words, lines); });
    outline_.producer = "listed";
    return outline_;
  }

  void deliver(const Choice& /*choice*/, Sink& sink, const ProgressSink& progress) override {
    sink.nodes(labels_, coordinates_, {path_, 0});
    for (const auto& group : groups_.all()) sink.elements(*group, {path_, 0});
    for (std::size_t i = 0; i < members_.size(); ++i) sink.set(i, members_[i]);
    RowsId at;
    std::size_t steps = 0;
    readLines(path_, [&](const Words& words, const LineReader& lines) {
      progress(lines.offset(), lines.size());
      const bool isRow = integerFrom(words[0]).has_value();
      if (!isRow) finishRows(at, sink, lines);
      if (words[0] == "step") at = {steps++, 0, static_cast<std::size_t>(-1)};
      if (words[0] == "frame") ++at.frame;
      if (words[0] == "field") at.field = fieldOf(outline_.steps[at.step], words[1]);
      if (isRow && sink.takes(at)) takeRow(words, lines);
      if (words[0] == "history" && sink.takesStep(at.step)) history(at.step, words, lines, sink);
    });
  }

 private:
  void look(const Words& words, const LineReader& lines) {
    if (words[0] == "node") {
      labels_.push_back(integerFrom(words[1]).value_or(0));
      for (const double x : numbers<double>(words, 2, lines)) coordinates_.push_back(x);
      outline_.nodes = labels_.size();
    } else if (words[0] == "element") {
      const int count = static_cast<int>(words.size() - 3);
      ElementGroup& group = groups_.groupOf(words[2], count, true, {path_, lines.lineNumber()});
      group.labels.push_back(integerFrom(words[1]).value_or(0));
      for (const int node : numbers<int>(words, 3, lines)) group.connectivity.push_back(node);
      ++outline_.elements;
    } else if (words[0].ends_with("-set")) {
      if (!withSets_) return;
      const auto kind = words[0] == "node-set" ? odbstore::SetKind::node : odbstore::SetKind::element;
      members_.push_back(numbers<int>(words, 2, lines));
      outline_.sets.push_back({kind, words[1], false, words.size() - 2, lines.place()});
    } else if (words[0] == "step") {
      OutlineStep& step = outline_.steps.emplace_back();
      step.number = integerFrom(words[1]).value_or(0);
      step.name = "Step-" + words[1];
    } else if (words[0] == "frame") {
      outline_.steps.back().frames.push_back(
          {integerFrom(words[1]).value_or(0), numberFrom(words[2]).value_or(0.0), "Frame " + words[1]});
    } else if (words[0] == "field") {
      OutlineStep& step = outline_.steps.back();
      OutlineField& field = step.fields[fieldOf(step, words[1])];
      field.info.type = static_cast<int>(typeOf(words.size() - 2));
      field.info.componentLabels = {words.begin() + 2, words.end()};
      if (field.info.componentLabels.size() == 1) field.info.componentLabels.clear();
      field.frames.push_back({step.frames.size() - 1, 0, 1});
      open_ = &field;
    } else if (open_ != nullptr && integerFrom(words[0])) {
      ++open_->frames.back().rows;
    } else if (words[0] != "history" && words[0] != "end") {
      lines.fail("\"" + words[0] + "\" is not known");
    }
  }

  static std::size_t fieldOf(OutlineStep& step, const std::string& name) {
    const auto same = std::find_if(step.fields.begin(), step.fields.end(),
                                   [&](const OutlineField& field) { return field.source == name; });
    if (same != step.fields.end()) return static_cast<std::size_t>(same - step.fields.begin());
    OutlineField field;
    field.name = field.source = name;
    field.info.description = name == "S" ? "Stress components" : name == "U" ? "Spatial displacement" : name;
    step.fields.push_back(field);
    return step.fields.size() - 1;
  }

  void takeRow(const Words& words, const LineReader& lines) {
    rows_.nodes.push_back(integerFrom(words[0]).value_or(0));
    for (const float number : numbers<float>(words, 1, lines)) values_.push_back(number);
  }

  void finishRows(const RowsId& at, Sink& sink, const LineReader& lines) {
    if (!rows_.nodes.empty()) {
      sink.rows(at, odbstore::Position::nodal, rows_, std::span<const float>(values_), {path_, lines.lineNumber()});
    }
    rows_ = {};
    values_.clear();
  }

  void history(std::size_t step, const Words& words, const LineReader& lines, Sink& sink) {
    odbstore::HistoryRegionInfo region;
    region.node = integerFrom(words[2]).value_or(-1);
    const std::vector<float> samples = numbers<float>(words, 3, lines);
    sink.history(step, "Node " + words[2], region, words[1],
                 {samples, static_cast<std::int64_t>(samples.size() / 2), 2});
  }

  std::string path_;
  bool withSets_;
  Outline outline_;
  std::vector<int> labels_;
  std::vector<double> coordinates_;
  ElementGroups groups_;
  std::vector<std::vector<int>> members_;
  OutlineField* open_ = nullptr;  // whose rows are being counted
  odbstore::LocationLabels rows_;
  std::vector<float> values_;
};

class ListedImporter : public Importer {
 public:
  std::string resultFile(const std::string& named) const override {
    return named.ends_with(".listed") ? named : named + ".listed";
  }
  bool recognises(std::string_view start, const std::string& /*path*/) const override {
    return start.starts_with(kFirstLine);
  }
  std::string beginning() const override { return "\"" + std::string(kFirstLine) + "\""; }
  void addOptions(tool::Command& command) override {
    command.group("Listed").flag("--without-sets", withoutSets_, "import no sets");
  }
  std::vector<std::string> inputs(const OpenRequest& request) const override { return {request.results}; }
  std::unique_ptr<Source> open(const OpenRequest& request, const WarningSink& /*warn*/) override {
    return std::make_unique<ListedSource>(request.results, !withoutSets_);
  }

 private:
  bool withoutSets_ = false;
};

}  // namespace

std::unique_ptr<Importer> makeImporter() { return std::make_unique<ListedImporter>(); }

}  // namespace importers::made_up
