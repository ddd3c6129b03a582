#include "report/page_records.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <unordered_map>

#include "base/file_error.h"
#include "report/record_meanings.h"

namespace report {

namespace {

// Of a value on the page: longer ones are histories, which have curves.
constexpr std::size_t kMostOfValue = 120;
// Of records on the page.
constexpr std::size_t kMostLines = 100'000;
// How many times smaller lines get by packing, at least; and what a record takes besides its line, at most.
constexpr std::size_t kPackedTimes = 4;
constexpr std::size_t kBytesOfColumns = 12;

std::ifstream openText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  in.peek();
  if (!in.is_open() || in.bad()) throw base::NoFileError(path, "cannot be read");
  in.clear();
  return in;
}

std::string shortened(const std::string& line, std::size_t tab) {
  if (line.size() <= tab + kMostOfValue) return line;
  return line.substr(0, tab + kMostOfValue) + "...";
}

class RecordColumns {
 public:
  // What is told of places goes by the page's numbers.
  RecordColumns(const std::vector<RecordMeaning>& meanings, const inspect::ModelMesh& mesh, const Surface& surface)
      : mesh_(mesh), surface_(surface) {
    for (const RecordMeaning& meaning : meanings) add(meaning);
  }

  Json json(PageData& data) const {
    Json columns = Json::object();
    for (const auto& [name, numbers] : columns_)
      columns[name] = data.add(pack(std::span<const std::int32_t>(numbers), 1));
    return columns;
  }
  const std::vector<std::string>& texts() const { return texts_; }

 private:
  void add(const RecordMeaning& meaning) {
    const bool isField = meaning.frame >= 0;
    columns_["step"].push_back(meaning.step);
    columns_["frame"].push_back(meaning.frame);
    columns_["field"].push_back(isField ? placeOf(meaning.field) : -1);
    columns_["quantity"].push_back(isField ? placeOf(meaning.quantity) : -1);
    columns_["set"].push_back(isField ? placeOf(meaning.set) : -1);
    columns_["extreme"].push_back(isField ? placeOf(meaning.extreme) : -1);
    addPlace(meaning.place.value_or(Place()));
  }

  std::int32_t placeOf(const std::string& text) {
    const auto [entry, isNew] = places_.try_emplace(text, static_cast<std::int32_t>(texts_.size()));
    if (isNew) texts_.push_back(text);
    return entry->second;
  }

  void addPlace(const Place& place) {
    const auto number = [](const std::vector<std::int32_t>& numbers, std::int64_t at) {
      return at < 0 ? -1 : numbers[static_cast<std::size_t>(at)];
    };
    columns_["vertex"].push_back(number(surface_.vertexOf, place.point));
    columns_["element"].push_back(number(surface_.elementOf, place.cell));
    columns_["node"].push_back(place.node);
    columns_["cell"].push_back(place.element);
    columns_["point"].push_back(place.integrationPoint);
    if (mesh_.parts.size() > 1) columns_["instance"].push_back(partOf(place.instance));
  }

  std::int32_t partOf(const std::string& instance) const {
    for (std::size_t i = 0; i < mesh_.parts.size(); ++i)
      if (mesh_.parts[i].instance == instance) return static_cast<std::int32_t>(i);
    return -1;
  }

  const inspect::ModelMesh& mesh_;
  const Surface& surface_;
  std::map<std::string, std::vector<std::int32_t>> columns_;
  std::vector<std::string> texts_;
  std::unordered_map<std::string, std::int32_t> places_;
};

}  // namespace

PageRecords::PageRecords(const RecordsSource& source, std::shared_ptr<const odbstore::Reader> reader, std::size_t most)
    : source_(source), most_(most) {
  read();
  packed_ = pack(lines_);
  meanings_.emplace(std::move(reader), names_);
}

void PageRecords::read() {
  std::ifstream in = openText(source_.params);
  std::int64_t number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos)
      throw base::FileError(source_.params, "line " + std::to_string(number), "no tab between a name and a value");
    if (names_.size() >= kMostLines || lines_.size() > most_ * kPackedTimes) {
      ++leftOut_;
      continue;
    }
    lines_ += shortened(line, tab);
    lines_ += '\n';
    names_.push_back(line.substr(0, tab));
  }
}

std::size_t PageRecords::unknown() const {
  const std::vector<RecordMeaning>& all = meanings_->all();
  return static_cast<std::size_t>(
      std::count_if(all.begin(), all.end(), [](const RecordMeaning& meaning) { return meaning.step < 0; }));
}

std::size_t PageRecords::bytes() const { return packed_->text.size() + names_.size() * kBytesOfColumns; }

Json PageRecords::json(const inspect::ModelMesh& mesh, const Surface& surface, const std::set<ShownField>& shown,
                       PageData& data) {
  meanings_->locate(mesh, source_.configuration, [&](const RecordMeaning& meaning) {
    return shown.count({static_cast<std::size_t>(meaning.step), meaning.frame, meaning.field}) > 0;
  });
  const RecordColumns columns(meanings_->all(), mesh, surface);
  Json json = {{"lines", data.add(*packed_)}, {"texts", columns.texts()}, {"columns", columns.json(data)}};
  return json;
}

std::vector<std::string> messageLines(const std::string& path) {
  constexpr std::size_t kMost = 1000;
  std::ifstream in = openText(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line) && lines.size() < kMost;)
    if (!line.empty()) lines.push_back(line);
  return lines;
}

}  // namespace report
