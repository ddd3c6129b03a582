#include "chosen_records.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <unordered_map>

#include "base/file_error.h"

namespace inspect {

namespace {

bool isPattern(const std::string& name) { return name.find_first_of("*?[") != std::string::npos; }

bool fits(const std::string& name, const std::string& pattern) {
  return name == pattern || ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

// Names in their order, each once.
class Names {
 public:
  ChosenRecord& add(const std::string& name) {
    const auto [known, isNew] = places_.try_emplace(name, records_.size());
    if (isNew) records_.push_back({name, {}, {}});
    return records_[known->second];
  }
  std::vector<ChosenRecord> take() { return std::move(records_); }

 private:
  std::vector<ChosenRecord> records_;
  std::unordered_map<std::string, std::size_t> places_;
};

// A line is a name, a tab and a value.
void addFrom(const LocateOptions& options, Names& names) {
  std::ifstream file(options.params, std::ios::binary);
  if (!file || std::filesystem::is_directory(options.params))
    throw base::NoFileError(options.params,
                            std::filesystem::exists(options.params) ? "cannot be read" : "does not exist");
  std::vector<bool> fitsOne(options.names.size());
  for (std::string line; std::getline(file, line);) {
    if (line.ends_with('\r')) line.pop_back();
    const std::size_t tab = line.rfind('\t');
    if (tab == std::string::npos)
      throw base::FileError(options.params, "", "is not a file of records: a line has no tab");
    const std::string name = line.substr(0, tab);
    bool isChosen = options.names.empty();
    for (std::size_t i = 0; i < options.names.size(); ++i) {
      if (fits(name, options.names[i])) isChosen = fitsOne[i] = true;
    }
    if (isChosen) names.add(name).recorded.push_back(line.substr(tab + 1));
  }
  for (std::size_t i = 0; i < fitsOne.size(); ++i) {
    if (!fitsOne[i]) names.add(options.names[i]);
  }
}

void addFitting(const std::string& pattern, const RecordList& records, Names& names) {
  bool isAny = false;
  records.forEach([&](const Record& record) {
    const bool isExtreme = record.kind != RecordKind::mass && record.extreme != Extreme::none;
    if (!isExtreme) return true;
    const std::string name = records.nameOf(record);
    if (!fits(name, pattern)) return true;
    names.add(name);
    isAny = true;
    return true;
  });
  if (!isAny) names.add(pattern);
}

}  // namespace

std::vector<ChosenRecord> chooseRecords(const LocateOptions& options, const RecordList& records) {
  Names names;
  if (!options.params.empty()) addFrom(options, names);
  for (const std::string& name : options.names) {
    if (!options.params.empty()) break;
    if (isPattern(name) && records.find(name).empty()) {
      addFitting(name, records, names);
    } else {
      names.add(name);
    }
  }
  std::vector<ChosenRecord> chosen = names.take();
  for (ChosenRecord& record : chosen) record.meanings = records.find(record.name);
  return chosen;
}

}  // namespace inspect
