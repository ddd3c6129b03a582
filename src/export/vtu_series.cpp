#include "export/vtu_series.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <span>

#include "base/descriptor.h"
#include "base/file_error.h"
#include "base/output_file.h"
#include "base/stale_files.h"
#include "export/field_arrays.h"
#include "export/set_arrays.h"
#include "export/vtu_file.h"
#include "export/xml_text.h"
#include "inspect/mesh/model_mesh.h"
#include "odbstore/database_file.h"

namespace vtk_export {

namespace {

namespace fs = std::filesystem;
using odbstore::StoredField;
using odbstore::StoredStep;

// The arrays of the chosen fields of a step.
using StepArrays = std::vector<std::unique_ptr<FieldArrays>>;

[[noreturn]] void fail(const odbstore::Reader& reader, const std::string& reason) {
  throw odbstore::StoreError(reader.file()->name(), "", reason);
}

std::vector<float> narrowed(const std::vector<double>& values) {
  std::vector<float> out(values.size());
  std::transform(values.begin(), values.end(), out.begin(), [](double value) { return static_cast<float>(value); });
  return out;
}

// Whether a name is that of a frame of the series, "job_0012.vtu".
bool isFrameName(const std::string& name, const std::string& stem) {
  if (!name.starts_with(stem + "_") || !name.ends_with(".vtu")) return false;
  const std::string number = name.substr(stem.size() + 1, name.size() - stem.size() - 5);
  return number.size() >= 4 && number.find_first_not_of("0123456789") == std::string::npos;
}

// Makes the directory of the frames, and takes away what an older series has left.
void clearSeries(const std::string& output, const std::string& directory, const std::string& stem) {
  try {
    fs::remove(output);
    fs::create_directory(directory);
    std::vector<fs::path> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) names.push_back(entry.path());
    for (const fs::path& path : names) {
      const std::string name = path.filename().string();
      const std::size_t mark = name.rfind(base::kTemporaryMark);
      if (isFrameName(name, stem)) fs::remove(path);
      if (mark != std::string::npos && isFrameName(name.substr(0, mark), stem))
        base::clearStaleFiles(directory + "/" + name.substr(0, mark));
    }
  } catch (const fs::filesystem_error& error) {
    throw base::FileError(directory, "", error.code().message());
  }
}

void writeText(base::OutputFile& file, const std::string& text) {
  const base::Descriptor out(::open(file.temporaryPath().c_str(), O_WRONLY | O_CLOEXEC));
  if (!out || !base::writeAt(out.get(), 0, std::as_bytes(std::span(text))))
    throw base::FileError(file.finalPath(), "", fmt::format("cannot be written: {}", std::strerror(errno)));
  file.publish();
}

class Series {
 public:
  Series(const odbstore::Reader& reader, const ExportRequest& request, const base::DiagnosticSink& warn)
      : reader_(reader), request_(request), warn_(warn), mesh_(inspect::readMesh(reader)) {
    if (mesh_.isEmpty()) fail(reader, "has no mesh, so there is nothing to draw");
    frames_ = chooseFrames(reader, request.steps, request.frames);
    if (request.withSets) sets_ = setArrays(reader, mesh_, request.sets);
    chooseFields();
    checkDisplacement();
    makeCells();
  }

  ExportSummary write(const FrameProgress& progress);

 private:
  // An array, and what puts its numbers behind those of the arrays before it.
  struct Entry {
    DataArray array;
    std::function<void(VtuFile&)> append;
  };

  void chooseFields();
  void checkDisplacement() const;
  void makeCells();
  std::vector<int> framesOf(const StoredField& field, const StoredStep* step) const;
  std::vector<double> pointsIn(const ChosenFrame& frame) const;
  std::vector<Entry> entries(const ChosenFrame& frame, Association association);
  std::vector<std::int32_t> partNumbers(bool isAtPoints) const;
  void writeFrame(const ChosenFrame& frame, const std::string& path);

  const odbstore::Reader& reader_;
  const ExportRequest& request_;
  const base::DiagnosticSink& warn_;
  inspect::ModelMesh mesh_;
  std::vector<ChosenFrame> frames_;
  std::vector<SetArray> sets_;
  std::map<const StoredStep*, StepArrays> fields_;
  std::set<std::string> fieldNames_;
  std::vector<std::int64_t> offsets_;
  std::vector<std::uint8_t> types_;
};

std::vector<int> Series::framesOf(const StoredField& field, const StoredStep* step) const {
  std::vector<int> frames;
  for (const ChosenFrame& chosen : frames_) {
    if (chosen.step.get() == step && field.existsIn(chosen.frame)) frames.push_back(chosen.frame);
  }
  return frames;
}

void Series::chooseFields() {
  std::vector<bool> fitsOne(request_.fields.size());
  const auto isChosen = [&](const std::string& name) {
    bool isAny = request_.fields.empty();
    for (std::size_t i = 0; i < request_.fields.size(); ++i) {
      const std::string& pattern = request_.fields[i];
      if (pattern == name || ::fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0) isAny = fitsOne[i] = true;
    }
    return isAny;
  };
  std::set<std::string> all;
  for (const ChosenFrame& chosen : frames_) {
    const StoredStep* const step = chosen.step.get();
    if (fields_.contains(step)) continue;
    StepArrays& arrays = fields_[step];
    for (const StoredField& field : step->fields()) {
      all.insert(field.name);
      if (!isChosen(field.name)) continue;
      const std::vector<int> frames = framesOf(field, step);
      if (frames.empty()) continue;
      arrays.push_back(std::make_unique<FieldArrays>(field, mesh_, frames, request_.withEachPoint));
      fieldNames_.insert(field.name);
      if (const std::int64_t lost = arrays.back()->lostRows(); lost > 0) {
        warn_(base::warning({reader_.file()->name()},
                            fmt::format("{} of {}: {} rows lie where the mesh has nothing; they are left out",
                                        field.name, step->name(), lost)));
      }
    }
  }
  const auto unused = std::find(fitsOne.begin(), fitsOne.end(), false);
  if (unused == fitsOne.end()) return;
  fail(reader_, fmt::format("the chosen frames have no field {}; fields: {}",
                            request_.fields[static_cast<std::size_t>(unused - fitsOne.begin())], fmt::join(all, ", ")));
}

// Whether each step has something to deform by.
void Series::checkDisplacement() const {
  if (!request_.isDeformed) return;
  for (const auto& [step, arrays] : fields_) {
    const StoredField* const field = step->findField(request_.displacement);
    const bool isThere = field != nullptr && field->info.type == static_cast<int>(odbstore::FieldType::vector);
    if (!isThere || framesOf(*field, step).empty()) {
      fail(reader_,
           fmt::format("{} has no vectors {} to deform by in the chosen frames", step->name(), request_.displacement));
    }
  }
}

void Series::makeCells() {
  std::int64_t end = 0;
  for (const inspect::CellGroup& group : mesh_.groups) {
    for (std::size_t i = 0; i < group.cells; ++i) offsets_.push_back(end += static_cast<std::int64_t>(group.nodes));
    types_.insert(types_.end(), group.cells, static_cast<std::uint8_t>(group.shape.type));
  }
}

// Nodes without a displacement stay where they are.
std::vector<double> Series::pointsIn(const ChosenFrame& frame) const {
  std::vector<double> points = mesh_.coordinates;
  const StoredField* const field = request_.isDeformed ? frame.step->findField(request_.displacement) : nullptr;
  if (field == nullptr || !field->existsIn(frame.frame)) return points;
  FieldArrays arrays(*field, mesh_, {frame.frame}, false);
  for (std::size_t a = 0; a < arrays.infos().size(); ++a) {
    if (arrays.infos()[a].association != Association::points) continue;
    const std::size_t width = arrays.infos()[a].width();
    const std::vector<double> moved = arrays.values(a, frame.frame);
    for (std::size_t i = 0; i < mesh_.nodeLabels.size(); ++i) {
      for (std::size_t k = 0; k < std::min<std::size_t>(width, 3); ++k) {
        if (std::isfinite(moved[i * width + k])) points[3 * i + k] += request_.scale * moved[i * width + k];
      }
    }
  }
  return points;
}

std::vector<Series::Entry> Series::entries(const ChosenFrame& frame, Association association) {
  const bool isAtPoints = association == Association::points;
  std::vector<Entry> entries;
  const std::vector<int>& labels = isAtPoints ? mesh_.nodeLabels : mesh_.elementLabels;
  entries.push_back(
      {{isAtPoints ? "node" : "element", Number::int32}, [&labels](VtuFile& file) { file.append(labels); }});
  if (mesh_.parts.size() > 1)
    entries.push_back(
        {{"instance", Number::int32}, [this, isAtPoints](VtuFile& file) { file.append(partNumbers(isAtPoints)); }});
  for (const SetArray& set : sets_) {
    if (set.association != association) continue;
    entries.push_back({{set.name, Number::uint8}, [&set](VtuFile& file) { file.append(set.isMember); }});
  }
  for (const std::unique_ptr<FieldArrays>& field : fields_.at(frame.step.get())) {
    for (std::size_t i = 0; field->existsIn(frame.frame) && i < field->infos().size(); ++i) {
      const ArrayInfo& info = field->infos()[i];
      if (info.association != association) continue;
      const Number number = info.isDouble ? Number::float64 : Number::float32;
      entries.push_back({{info.name, number, info.width(), info.components}, [&field, &info, &frame, i](VtuFile& file) {
                           const std::vector<double> values = field->values(i, frame.frame);
                           info.isDouble ? file.append(values) : file.append(narrowed(values));
                         }});
    }
  }
  return entries;
}

// Of each point or cell the number of its instance, by name.
std::vector<std::int32_t> Series::partNumbers(bool isAtPoints) const {
  std::vector<std::int32_t> numbers;
  for (std::size_t i = 0; i < mesh_.parts.size(); ++i) {
    const inspect::MeshPart& part = mesh_.parts[i];
    numbers.insert(numbers.end(), isAtPoints ? part.points : part.cells, static_cast<std::int32_t>(i));
  }
  return numbers;
}

void Series::writeFrame(const ChosenFrame& frame, const std::string& path) {
  const std::vector<Entry> pointData = entries(frame, Association::points);
  const std::vector<Entry> cellData = entries(frame, Association::cells);
  VtuHead head;
  head.points = mesh_.nodeLabels.size();
  head.cells = mesh_.elementLabels.size();
  head.isPacked = request_.isPacked;
  head.numbers = {{"TimeValue", frame.time},
                  {"frame", static_cast<double>(frame.info.incrementNumber)},
                  {"value", frame.info.value}};
  head.texts = {{"step", frame.step->name()}, {"description", frame.info.description}};
  for (const Entry& entry : pointData) head.pointData.push_back(entry.array);
  for (const Entry& entry : cellData) head.cellData.push_back(entry.array);
  VtuFile file(path, head);
  for (const Entry& entry : pointData) entry.append(file);
  for (const Entry& entry : cellData) entry.append(file);
  file.append(pointsIn(frame));
  file.append(mesh_.connectivity);
  file.append(offsets_);
  file.append(types_);
  file.publish();
}

ExportSummary Series::write(const FrameProgress& progress) {
  const std::string directory = framesDirectory(request_.output);
  const std::string stem = fs::path(request_.output).stem().string();
  base::OutputFile collection(request_.output);
  clearSeries(request_.output, directory, stem);
  ExportSummary summary = {frames_.size(),          fieldNames_.size(),         sets_.size(),
                           mesh_.nodeLabels.size(), mesh_.elementLabels.size(), 0};
  std::string list = "<?xml version=\"1.0\"?>\n<VTKFile type=\"Collection\" version=\"1.0\">\n  <Collection>\n";
  for (std::size_t i = 0; i < frames_.size(); ++i) {
    progress(i, frames_.size());
    const std::string path = fmt::format("{}/{}_{:04}.vtu", directory, stem, i);
    writeFrame(frames_[i], path);
    summary.bytes += fs::file_size(path);
    list += fmt::format("    <DataSet timestep=\"{}\" part=\"0\" file=\"{}\"/>\n", frames_[i].time,
                        xmlText(fs::path(path).lexically_relative(fs::path(directory).parent_path()).string()));
  }
  list += "  </Collection>\n</VTKFile>\n";
  writeText(collection, list);
  summary.bytes += list.size();
  return summary;
}

}  // namespace

std::string framesDirectory(const std::string& output) { return fs::path(output).replace_extension(".vtu").string(); }

ExportSummary exportVtu(const odbstore::Reader& reader, const ExportRequest& request, const base::DiagnosticSink& warn,
                        const FrameProgress& progress) {
  return Series(reader, request, warn).write(progress);
}

}  // namespace vtk_export
