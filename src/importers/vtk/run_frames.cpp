#include "importers/vtk/run_frames.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>

#include "importers/input/text_fields.h"
#include "importers/vtk/array_reader.h"
#include "importers/vtk/ghosts.h"

namespace importers::vtk {

namespace {

namespace fs = std::filesystem;

constexpr int kDeepest = 8;
// A small collection could name a large file very often.
constexpr std::size_t kMostUses = 100;
constexpr std::uint64_t kMostValues = 16;

bool isTime(std::string_view name) {
  const std::string upper = upperCased(name);
  return upper == "TIME" || upper == "TIMEVALUE";
}

class RunReader {
 public:
  RunReader(bool isStrict, const WarningSink& warn) : isStrict_(isStrict), warn_(warn) {}

  RunFrames read(const std::string& path) {
    const InputFile file(path);
    VtkFile found = readVtkFile(file);
    RunFrames run;
    const auto* const collection = std::get_if<Collection>(&found);
    if (collection != nullptr && !collection->files.empty() && collection->files.front().time) {
      run.form = collection->form;
      for (const std::vector<NamedFile>& files : inTime(*collection)) {
        const std::string& named = files.front().path;
        add(run, {named, files.front().time}, [&](RunFrame& frame) {
          for (const NamedFile& one : files) takeNamed(one, path, {}, 1, frame);
          requireGrid(frame);
        });
      }
    } else {
      RunFrame& frame = run.frames.emplace_back();
      frame.path = path;
      take(file, std::move(found), {}, 0, frame);
      requireGrid(frame);
      run.form = collection != nullptr ? collection->form : frame.files.front().grid.form;
    }
    requireFrames(run, path);
    return run;
  }

  RunFrames readSeries(const std::string& path) {
    RunFrames run;
    run.form = "numbered files";
    for (const auto& [number, one] : seriesOf(path)) {
      add(run, {one, {}}, [&, &named = one](RunFrame& frame) {
        const InputFile file(named);
        take(file, readVtkFile(file), {}, 1, frame);
        requireGrid(frame);
      });
      if (!run.endsWithDamage && !run.frames.back().time) numbers_.emplace_back(run.frames.size() - 1, number);
    }
    // Times of their own count where all files have one.
    if (!numbers_.empty()) {
      if (numbers_.size() < run.frames.size()) {
        warn_(base::warning({path},
                            "some files of the series have no time, so that the numbers of all are taken for it"));
      }
      for (RunFrame& frame : run.frames) frame.time = numberOf(frame.path);
    }
    requireFrames(run, path);
    return run;
  }

 private:
  struct Start {
    std::string path;
    std::optional<double> time;
  };

  static double numberOf(const std::string& path);

  static void requireFrames(const RunFrames& run, const std::string& path) {
    if (!run.frames.empty()) return;
    if (!run.damage.empty()) throw run.damage.front();
    throw ImportError(path, 0, "the file names no files with results");
  }

  // One frame, or what is wrong with it.
  template <typename Fill>
  void add(RunFrames& run, const Start& start, const Fill& fill) {
    RunFrame frame;
    frame.path = start.path;
    frame.time = start.time;
    try {
      fill(frame);
      run.endsWithDamage = false;
      run.frames.push_back(std::move(frame));
    } catch (const ImportError& error) {
      run.damage.push_back(error);
      run.endsWithDamage = true;
    }
  }

  // Files of one time belong together as long as they are different parts; the same part again is another frame.
  static std::vector<std::vector<NamedFile>> inTime(const Collection& collection) {
    std::vector<std::vector<NamedFile>> frames;
    std::map<std::pair<double, std::vector<std::string>>, std::size_t> uses;
    std::map<double, std::vector<std::size_t>> ofTime;
    for (const NamedFile& file : collection.files) {
      const std::size_t use = uses[{*file.time, file.blocks}]++;
      std::vector<std::size_t>& same = ofTime[*file.time];
      if (use == same.size()) {
        same.push_back(frames.size());
        frames.emplace_back();
      }
      frames[same[use]].push_back(file);
    }
    // One part alone is the whole.
    const bool isWhole = std::all_of(frames.begin(), frames.end(), [](const auto& files) { return files.size() == 1; });
    for (std::vector<NamedFile>& files : frames) {
      if (isWhole) files.front().blocks.clear();
    }
    return frames;
  }

  void takeNamed(const NamedFile& named, const std::string& by, std::vector<std::string> blocks, int depth,
                 RunFrame& frame) {
    const SourcePlace place{by, named.line};
    if (depth > kDeepest) throw ImportError(place, "files name each other too deeply");
    if (++uses_[fs::path(named.path).lexically_normal().string()] > kMostUses) {
      throw ImportError(place, fmt::format("{} is named more than {} times", named.path, kMostUses));
    }
    blocks.insert(blocks.end(), named.blocks.begin(), named.blocks.end());
    std::error_code ignored;
    if (!fs::exists(named.path, ignored)) {
      throw ImportError(place, fmt::format("the file {} does not exist", named.path));
    }
    const InputFile file(named.path);
    try {
      take(file, readVtkFile(file), blocks, depth, frame);
    } catch (const OtherKind& other) {
      if (isStrict_) throw;
      warn_(base::warning(other.place(), other.reason() + "; the file is left out"));
      others_.emplace(other);
    }
  }

  // Blocks may be of other kinds, but not all of them.
  void requireGrid(const RunFrame& frame) const {
    if (frame.files.empty() && others_) throw *others_;
  }

  void take(const InputFile& file, VtkFile found, const std::vector<std::string>& blocks, int depth, RunFrame& frame) {
    if (auto* const grid = std::get_if<Grid>(&found)) {
      for (const auto& [line, text] : grid->remarks) warn_(base::warning({file.path(), line}, text));
      checkSizes(file, *grid);
      for (Piece& piece : grid->pieces) {
        const std::vector<bool> isCopy = copiesAmong(file, piece);
        piece.copies = static_cast<std::uint64_t>(std::count(isCopy.begin(), isCopy.end(), true));
      }
      takeFieldData(file, grid->fieldData, frame);
      frame.files.push_back({file.path(), file.size(), blocks, std::move(*grid)});
      return;
    }
    const auto& collection = std::get<Collection>(found);
    takeFieldData(file, collection.fieldData, frame);
    if (collection.files.empty()) throw ImportError(file.path(), 0, "the file names no files with results");
    for (const NamedFile& named : collection.files) {
      if (named.time) throw ImportError(file.path(), named.line, "a collection in time inside another file");
      takeNamed(named, file.path(), blocks, depth + 1, frame);
    }
  }

  // A file that is cut off lacks whole arrays, and the frame is not complete.
  static void checkSizes(const InputFile& file, const Grid& grid) {
    const auto check = [&](const StoredArray& array) {
      if (array.encoding == Encoding::text) return;
      try {
        const ArrayReader reader(file, array);
      } catch (const CutOff&) {
        throw;
      } catch (const ImportError&) {
        // Damage of one array costs that array, when it is read.
      }
    };
    for (const Piece& piece : grid.pieces) {
      for (const StoredArray* const array : {&piece.coordinates, &piece.offsets, &piece.types}) check(*array);
      for (const StoredArray& array : piece.pointData) check(array);
      for (const StoredArray& array : piece.cellData) check(array);
    }
  }

  void takeFieldData(const InputFile& file, const std::vector<StoredArray>& arrays, RunFrame& frame) {
    for (const StoredArray& array : arrays) {
      if (array.numbers() == 0) continue;
      if (array.numbers() > kMostValues) {
        warn_(base::note(
            {file.path(), array.line},
            fmt::format("the field data \"{}\" have {} numbers and are left out", array.name, array.numbers())));
        continue;
      }
      std::vector<double> values(array.numbers());
      try {
        ArrayReader(file, array).read(std::span(values));
      } catch (const CutOff&) {
        throw;
      } catch (const ImportError& error) {
        warn_(base::warning(error.place(), error.reason() + "; it is left out"));
        continue;
      }
      if (values.size() == 1 && isTime(array.name)) {
        if (!frame.time && std::isfinite(values.front())) frame.time = values.front();
        continue;
      }
      warnOfControlCharacters(array.name, {file.path(), array.line}, warn_);
      const std::string name = storableText(array.name);
      addValues(trimmed(name).empty() ? "unnamed" : name, values, frame);
    }
  }

  // Of pieces that all have the same number the first counts.
  static void addValues(const std::string& name, const std::vector<double>& values, RunFrame& frame) {
    for (std::size_t i = 0; i < values.size(); ++i) {
      const std::string own = values.size() == 1 ? name : fmt::format("{}_{}", name, i + 1);
      const auto isSame = [&](const FieldValue& known) { return known.name == own; };
      if (std::none_of(frame.values.begin(), frame.values.end(), isSame)) frame.values.push_back({own, values[i]});
    }
  }

  bool isStrict_;
  const WarningSink& warn_;
  std::map<std::string, std::size_t> uses_;
  std::optional<OtherKind> others_;                      // the last file that is left out
  std::vector<std::pair<std::size_t, double>> numbers_;  // frames without a time
};

// The parts of a name: before the last number in front of the ending, the number, and behind it.
struct NumberedName {
  std::string before;
  std::string digits;
  std::string after;
};

std::optional<NumberedName> numbered(const std::string& name) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  const std::size_t point = std::min(name.rfind('.'), name.size());
  std::size_t end = point;
  while (end > 0 && !isDigit(name[end - 1])) --end;
  std::size_t begin = end;
  while (begin > 0 && isDigit(name[begin - 1])) --begin;
  if (begin == end) return std::nullopt;
  return NumberedName{name.substr(0, begin), name.substr(begin, end - begin), name.substr(end)};
}

double RunReader::numberOf(const std::string& path) {
  const std::optional<NumberedName> name = numbered(fs::path(path).filename().string());
  return name ? numberFrom(name->digits).value_or(0.0) : 0.0;
}

}  // namespace

std::vector<std::pair<double, std::string>> seriesOf(const std::string& path) {
  const fs::path own(path);
  const std::optional<NumberedName> name = numbered(own.filename().string());
  if (!name) return {{0.0, path}};
  std::vector<std::pair<double, std::string>> series;
  const fs::path directory = own.has_parent_path() ? own.parent_path() : fs::path(".");
  std::error_code failed;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory, failed)) {
    const std::optional<NumberedName> other = numbered(entry.path().filename().string());
    if (!other || other->before != name->before || other->after != name->after) continue;
    series.emplace_back(numberFrom(other->digits).value_or(0.0),
                        (own.parent_path() / entry.path().filename()).string());
  }
  if (failed) throw ImportError(path, 0, "the directory cannot be read: " + failed.message());
  std::sort(series.begin(), series.end());
  return series;
}

RunFrames readRun(const std::string& path, bool isSeries, bool isStrict, const WarningSink& warn) {
  RunReader reader(isStrict, warn);
  return isSeries ? reader.readSeries(path) : reader.read(path);
}

std::vector<std::string> filesOf(const std::string& path, bool isSeries) {
  std::set<std::string> files = {path};
  std::vector<std::string> due = {path};
  if (isSeries) {
    for (const auto& [number, one] : seriesOf(path)) due.push_back(one);
  }
  while (!due.empty()) {
    const std::string next = std::move(due.back());
    due.pop_back();
    files.insert(next);
    try {
      for (std::string& named : filesNamedBy(InputFile(next))) {
        if (!files.contains(named)) due.push_back(std::move(named));
      }
    } catch (const ImportError&) {
      // Reading it will say so.
    }
  }
  return {files.begin(), files.end()};
}

}  // namespace importers::vtk
