#include "chosen_contents.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "base/control_characters.h"
#include "base/file_error.h"
#include "inspect/name_choice.h"
#include "inspect/open_database.h"
#include "odbstore/database_file.h"

namespace inspect {

namespace {

std::vector<SetContents> setsOf(const odbstore::DatabaseFile& file, const Choice& choice) {
  std::vector<SetContents> sets;
  const std::vector<ModelSet> all = modelSets(file);
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (!choice.takesSet(all[i].name)) continue;
    sets.push_back({all[i], memberCount(file, i), {}});
    if (choice.isOfSets()) sets.back().labels = setLabels(file, i);
  }
  return sets;
}

void describeFile(ChosenContents& contents) {
  const odbstore::DatabaseFile& file = *contents.database->file();
  const bool isUpgraded = file.name() != contents.path;
  std::error_code ignored;
  contents.layout = isUpgraded ? 1 : file.catalog().columns().layout();
  contents.bytes =
      isUpgraded ? static_cast<std::int64_t>(std::filesystem::file_size(contents.path, ignored)) : file.size();
}

// What is asked for and not there is most likely misspelt.
void require(bool isThere, const std::string& path, const char* what, const std::vector<std::string>& names) {
  if (isThere) return;
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + ('"' + base::escaped(name) + '"');
  throw base::FileError(path, "", std::string("there is no ") + what + " " + list);
}

}  // namespace

bool Choice::takesStep(std::size_t place, std::string_view name) const {
  const std::string number = std::to_string(place + 1);
  return NameChoice(options_.steps).takes(name) ||
         std::find(options_.steps.begin(), options_.steps.end(), number) != options_.steps.end();
}

bool Choice::takesField(std::string_view name) const { return NameChoice(options_.fields).takes(name); }

bool Choice::takesSet(std::string_view name) const { return NameChoice(options_.sets).takes(name); }

ChosenContents chosenContents(const ShowOptions& options) {
  const Choice choice(options);
  ChosenContents contents;
  contents.path = databasePath(options.database);
  contents.database = openDatabase(options.database);
  describeFile(contents);
  contents.isWhole = choice.isWhole();
  contents.allSteps = stepContents(*contents.database);
  for (std::size_t i = 0; i < contents.allSteps.size(); ++i) {
    if (choice.takesStep(i, contents.allSteps[i].name)) contents.steps.push_back(i);
  }
  require(options.steps.empty() || !contents.steps.empty(), contents.path, "step", options.steps);
  const auto isStepTaken = [&](std::size_t place) {
    return std::binary_search(contents.steps.begin(), contents.steps.end(), place);
  };
  if (choice.isWhole() || choice.isOfFields()) {
    contents.fields = fieldContents(*contents.database);
    std::erase_if(contents.fields, [&](const FieldContents& field) {
      return !isStepTaken(field.step) || !choice.takesField(field.name);
    });
  }
  require(!choice.isOfFields() || !contents.fields.empty(), contents.path, "field", options.fields);
  if (choice.isWhole() || choice.isOfSets()) contents.sets = setsOf(*contents.database->file(), choice);
  require(!choice.isOfSets() || !contents.sets.empty(), contents.path, "set", options.sets);
  if (!choice.isWhole()) return contents;
  contents.meshes = meshContents(*contents.database);
  contents.histories = historyContents(*contents.database);
  std::erase_if(contents.histories, [&](const HistoryContents& history) { return !isStepTaken(history.step); });
  return contents;
}

}  // namespace inspect
