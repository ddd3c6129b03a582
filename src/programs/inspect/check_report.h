// What a check of a configuration has found, as text and as JSON.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inspect/configuration_effect.h"
#include "inspect/repeated_names.h"

namespace inspect {

// Of a database.
struct DatabaseReport {
  std::shared_ptr<const RecordList> records;
  std::string path;
  RecordList::Count count;
  std::vector<FieldContents> fields;
  std::vector<FieldChoice> choices;  // of those fields
  RepeatedNames repeated;
  std::vector<std::string> steps;  // names
};

struct CheckReport {
  std::string configuration;
  Remarks remarks;
  bool takesNothing = false;
  std::optional<DatabaseReport> database;
};

std::string reportText(const CheckReport& report);
// An object with the lists `remarks`, `fields`, `repeated` and the object `counts`.
std::string reportJson(const CheckReport& report);

}  // namespace inspect
