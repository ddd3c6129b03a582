#include "collect_table.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "base/file_error.h"
#include "base/output_file.h"
#include "batch/collect/collect.h"
#include "tables/csv_table.h"
#include "tables/json_table.h"
#include "tables/sqlite_table.h"
#include "tool/console.h"

namespace batch {

namespace {

CollectSummary writeText(const CollectOptions& options, const BatchDirectory& directory, int file,
                         const std::string& name) {
  tables::TextOutput output(file, name);
  const CollectRequest request = {options.patterns, options.isLong};
  if (options.form == "json") {
    tables::JsonTable table(output);
    return collect(directory, request, table);
  }
  tables::CsvTable table(output);
  return collect(directory, request, table);
}

CollectSummary writeFile(const CollectOptions& options, const BatchDirectory& directory) {
  base::OutputFile file(options.output);
  CollectSummary summary;
  if (options.form == "sqlite") {
    tables::SqliteTable table(file.temporaryPath(), options.output, options.isLong ? "records" : "results");
    summary = collect(directory, {options.patterns, options.isLong}, table);
  } else {
    const base::Descriptor opened(::open(file.temporaryPath().c_str(), O_WRONLY | O_CLOEXEC));
    if (!opened) {
      throw base::FileError(options.output, "", fmt::format("cannot be created: {}", std::strerror(errno)));
    }
    summary = writeText(options, directory, opened.get(), options.output);
  }
  file.publish();
  return summary;
}

}  // namespace

void collectTable(const CollectOptions& options) {
  const BatchDirectory directory(options.directory);
  const CollectSummary summary = options.output.empty()
                                     ? writeText(options, directory, STDOUT_FILENO, "standard output")
                                     : writeFile(options, directory);
  if (summary.unfinished > 0) {
    tool::complain(fmt::format("{}: {} inputs are running or missing", options.directory, summary.unfinished));
  }
}

}  // namespace batch
