// The contents of a database that a user has chosen.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "inspect/contents.h"
#include "inspect/model_sets.h"
#include "show_options.h"

namespace inspect {

// Which steps, fields, sets.
class Choice {
 public:
  explicit Choice(const ShowOptions& options) : options_(options) {}

  bool takesStep(std::size_t place, std::string_view name) const;
  bool takesField(std::string_view name) const;
  bool takesSet(std::string_view name) const;

  // With a field or a set asked for, the other things are not shown.
  bool isOfFields() const { return !options_.fields.empty(); }
  bool isOfSets() const { return !options_.sets.empty(); }
  bool isWhole() const { return !isOfFields() && !isOfSets(); }

 private:
  const ShowOptions& options_;
};

struct SetContents {
  ModelSet set;
  std::int64_t members = 0;
  std::vector<SetLabels> labels;  // where sets are asked for
};

struct ChosenContents {
  std::string path;
  std::shared_ptr<const odbstore::Reader> database;
  int layout = 0;  // of the file; the database may be an upgraded copy
  std::int64_t bytes = 0;
  bool isWhole = true;
  std::vector<MeshContents> meshes;
  std::vector<StepContents> allSteps;  // by place
  std::vector<std::size_t> steps;      // places
  std::vector<FieldContents> fields;
  std::vector<SetContents> sets;
  std::vector<HistoryContents> histories;
};

// Throws base::FileError where the database cannot be read, or has none of the steps, fields or sets that are asked
// for.
ChosenContents chosenContents(const ShowOptions& options);

}  // namespace inspect
