#include "params.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <optional>

#include "base/control_characters.h"
#include "base/descriptor.h"
#include "base/file_error.h"
#include "base/output_file.h"
#include "inspect/configuration.h"
#include "inspect/name_choice.h"
#include "inspect/name_parts.h"
#include "inspect/open_database.h"
#include "inspect/params_file.h"
#include "record_columns.h"
#include "tables/csv_table.h"
#include "tables/dakota_table.h"
#include "tables/json_table.h"
#include "tables/record_lines.h"
#include "tables/sqlite_table.h"
#include "tool/console.h"

namespace inspect {

namespace {

using Fill = std::function<void(tables::Table&)>;

void writeText(const ParamsOptions& options, int file, const std::string& name, const Fill& fill) {
  tables::TextOutput output(file, name);
  if (options.form == "json") {
    tables::JsonTable table(output);
    fill(table);
  } else if (options.form == "dakota") {
    tables::DakotaTable table(output);
    fill(table);
    if (table.leftOut() > 0) {
      tool::complain(fmt::format("{}: {} records that are not single numbers are left out", base::escaped(options.file),
                                 table.leftOut()));
    }
  } else {
    tables::CsvTable table(output);
    fill(table);
  }
}

// Calls write(file, name) for what the table is written to, and gives a file its name when that is done.
void writeTo(const ParamsOptions& options, const std::function<void(int file, const std::string& name)>& write) {
  if (options.output.empty()) return write(STDOUT_FILENO, "standard output");
  base::OutputFile file(options.output);
  const base::Descriptor opened(::open(file.temporaryPath().c_str(), O_WRONLY | O_CLOEXEC));
  if (!opened) throw base::FileError(options.output, "", fmt::format("cannot be created: {}", std::strerror(errno)));
  write(opened.get(), options.output);
  file.publish();
}

void writeTable(const ParamsOptions& options, const Fill& fill) {
  if (options.form != "sqlite") {
    return writeTo(options, [&](int file, const std::string& name) { writeText(options, file, name, fill); });
  }
  base::OutputFile file(options.output);
  tables::SqliteTable table(file.temporaryPath(), options.output, "records");
  fill(table);
  file.publish();
}

// Dakota learns of a failure by what stands in the file.
int fail(const ParamsOptions& options, int status, const std::string& reason) {
  tool::complain(reason);
  if (options.form != "dakota") return status;
  writeTo(options, [](int file, const std::string& name) {
    tables::TextOutput output(file, name);
    output.write(tables::DakotaTable::kFailure);
    output.flush();
  });
  return status;
}

std::string markerReason(const ParamsFile& params) {
  if (params.state == MarkerState::missing) {
    return fmt::format("{}: there is no such marker, so {} may be incomplete", base::escaped(params.marker),
                       base::escaped(params.path));
  }
  return fmt::format("{}: this marker does not speak for {}: it is older, or not that of a run",
                     base::escaped(params.marker), base::escaped(params.path));
}

// Those of the names that are required and not there.
std::string missingNames(const ParamsOptions& options, const ParamsFile& params) {
  std::vector<bool> isThere(options.required.size());
  std::vector<NameChoice> choices;
  for (const std::string& name : options.required) choices.emplace_back(std::vector<std::string>{name});
  tables::forEachRecord(params.text, [&](std::string_view name, std::string_view) {
    for (std::size_t i = 0; i < choices.size(); ++i) {
      if (!isThere[i]) isThere[i] = choices[i].takes(name);
    }
  });
  std::string missing;
  for (std::size_t i = 0; i < choices.size(); ++i) {
    if (!isThere[i]) missing += (missing.empty() ? "" : ", ") + base::escaped(options.required[i]);
  }
  return missing;
}

// The records that are chosen, as rows of a table.
class RecordRows {
 public:
  RecordRows(const ParamsOptions& options, const ParamsFile& params) : params_(params), choice_(options.patterns) {
    if (options.database.empty()) return;
    std::optional<ExtractionSwitches> switches;
    if (!options.configuration.empty()) switches = switchesOf(readConfigurationFile(options.configuration));
    names_.emplace(openDatabase(options.database), switches);
    tables::forEachRecord(params.text, [&](std::string_view name, std::string_view) { names_->announce(name); });
  }

  void write(tables::Table& table) {
    std::vector<tables::Column> columns = {{"name"}, {"value", true}};
    if (names_) {
      const std::vector<tables::Column> parts = partColumns();
      columns.insert(columns.end(), parts.begin(), parts.end());
    }
    table.begin(columns);
    tables::forEachRecord(params_.text,
                          [&](std::string_view name, std::string_view value) { put(table, name, value); });
    table.end();
  }

  // That no name is one of the database says that it is another one's.
  void requireKnown(const std::string& database) const {
    if (!names_ || names_->unknown() == 0) return;
    if (names_->unknown() == asked_) {
      throw base::FileError(params_.path, "", fmt::format("no name in it is one of {}", base::escaped(database)));
    }
    tool::complain(fmt::format("{}: {} names are none of {}", base::escaped(params_.path), names_->unknown(),
                               base::escaped(database)));
  }
  void sayAmbiguous(bool hasConfiguration) const {
    if (!names_ || names_->ambiguous() == 0) return;
    tool::complain(fmt::format("{}: {} names can be several records{}", base::escaped(params_.path),
                               names_->ambiguous(), hasConfiguration ? "" : "; --config may tell which"));
  }

 private:
  void put(tables::Table& table, std::string_view name, std::string_view value) {
    if (!names_) {
      if (choice_.takes(name)) table.row({name, value});
      return;
    }
    // Of a name that occurs several times each one counts, chosen or not; a pattern chooses all or none of them.
    if (!choice_.takes(name)) return;
    ++asked_;
    cells_ = {name, value};
    const std::vector<tables::Cell>& parts = parts_.of(names_->next(name));
    cells_.insert(cells_.end(), parts.begin(), parts.end());
    table.row(cells_);
  }

  const ParamsFile& params_;
  NameChoice choice_;
  std::optional<NameParts> names_;
  PartCells parts_;
  std::vector<tables::Cell> cells_;
  std::size_t asked_ = 0;
};

}  // namespace

int params(const ParamsOptions& options) {
  const ParamsFile params = readParams(options.file);
  if (params.state != MarkerState::there && !options.isUnmarked) return fail(options, kNotMarked, markerReason(params));
  const std::string missing = missingNames(options, params);
  if (!missing.empty()) {
    return fail(options, kNotThere, fmt::format("{}: there is no record {}", base::escaped(params.path), missing));
  }
  RecordRows rows(options, params);
  writeTable(options, [&](tables::Table& table) {
    rows.write(table);
    rows.requireKnown(options.database);
  });
  rows.sayAmbiguous(!options.configuration.empty());
  return 0;
}

}  // namespace inspect
