#include "report/page_records.h"

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
  explicit RecordColumns(const std::vector<RecordMeaning>& meanings) {
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
  }

  std::int32_t placeOf(const std::string& text) {
    const auto [entry, isNew] = places_.try_emplace(text, static_cast<std::int32_t>(texts_.size()));
    if (isNew) texts_.push_back(text);
    return entry->second;
  }

  std::map<std::string, std::vector<std::int32_t>> columns_;
  std::vector<std::string> texts_;
  std::unordered_map<std::string, std::int32_t> places_;
};

}  // namespace

RecordsPart recordsPart(const std::string& params, const std::shared_ptr<const odbstore::Reader>& reader,
                        std::size_t most, PageData& data) {
  std::ifstream in = openText(params);
  RecordsPart part;
  std::string lines;
  std::vector<std::string> names;
  std::int64_t number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos)
      throw base::FileError(params, "line " + std::to_string(number), "no tab between a name and a value");
    if (names.size() >= kMostLines || lines.size() > most * 4) {
      ++part.leftOut;
      continue;
    }
    lines += shortened(line, tab);
    lines += '\n';
    names.push_back(line.substr(0, tab));
  }
  part.shown = names.size();
  const std::vector<RecordMeaning> meanings = recordMeanings(reader, names);
  const RecordColumns columns(meanings);
  for (const RecordMeaning& meaning : meanings) part.unknown += meaning.step < 0 ? 1U : 0U;
  part.json = {{"lines", data.add(pack(lines))}, {"texts", columns.texts()}, {"columns", columns.json(data)}};
  return part;
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
