#include "complete_names.h"

#include <exception>
#include <memory>
#include <set>

#include "inspect/model_sets.h"
#include "inspect/open_database.h"
#include "odbstore/reader.h"
#include "show_options.h"

namespace inspect {

namespace {

std::set<std::string> fieldsOf(const odbstore::Reader& database) {
  std::set<std::string> names;
  for (const std::string& name : database.steps()) {
    const std::shared_ptr<const odbstore::StoredStep> step = database.step(name);
    for (const odbstore::StoredField& field : step->fields()) names.insert(field.name);
  }
  return names;
}

std::set<std::string> setsOf(const odbstore::Reader& database) {
  std::set<std::string> names;
  for (const ModelSet& set : modelSets(*database.file())) names.emplace(set.name);
  return names;
}

}  // namespace

std::vector<std::string> completeNames(const std::string& option, const std::vector<std::string>& words) {
  try {
    ShowOptions options;
    if (showCommand(options).parse(words).isDone || options.database.empty()) return {};
    tool::endAfterPatience();
    // One of an older layout would have to be upgraded first.
    const auto database = odbstore::Reader::openIfNewest(databasePath(options.database));
    if (!database) return {};
    if (option == "--step") return database->steps();
    const std::set<std::string> names = option == "--field" ? fieldsOf(*database) : setsOf(*database);
    return {names.begin(), names.end()};
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace inspect
