#include "check.h"

#include <algorithm>

#include "check_report.h"
#include "inspect/configuration_words.h"
#include "inspect/open_database.h"
#include "tool/console.h"

namespace inspect {

namespace {

// As many as somebody reads.
constexpr std::size_t kMostRepeated = 20;

DatabaseReport databaseReport(const Configuration& configuration, const std::string& database, Remarks& remarks) {
  DatabaseReport report;
  report.path = databasePath(database);
  report.records = std::make_shared<const RecordList>(openDatabase(database), configuration.switches);
  const RecordList& records = *report.records;
  report.steps = records.database().steps();
  report.count = records.count();
  report.fields = fieldContents(records.database());
  report.choices = fieldChoices(report.fields, configuration.switches);
  report.repeated = repeatedNames(records, kMostRepeated);
  const Remarks ofDatabase = databaseRemarks(configuration, records, report.count, report.fields);
  remarks.insert(remarks.end(), ofDatabase.begin(), ofDatabase.end());
  return report;
}

CheckReport reportOf(const CheckOptions& options) {
  const Configuration configuration = readConfigurationFile(options.configuration);
  CheckReport report;
  report.configuration = options.configuration;
  report.remarks = wordRemarks(configuration);
  const Remarks ofEffect = effectRemarks(configuration);
  report.remarks.insert(report.remarks.end(), ofEffect.begin(), ofEffect.end());
  report.takesNothing = configuration.refusal || !takesAnything(configuration.switches);
  if (!options.database.empty()) {
    report.database = databaseReport(configuration, options.database, report.remarks);
    report.takesNothing = report.takesNothing || report.database->count.all() == 0;
  }
  if (report.takesNothing && !configuration.refusal) report.remarks.push_back({0, "a run writes no record"});
  std::stable_sort(report.remarks.begin(), report.remarks.end(),
                   [](const Remark& a, const Remark& b) { return a.line < b.line; });
  return report;
}

}  // namespace

int check(const CheckOptions& options) {
  const CheckReport report = reportOf(options);
  tool::print(options.isJson ? reportJson(report) : reportText(report));
  tool::finishOutput();
  if (report.takesNothing) return kTakesNothing;
  const bool areNamesRepeated = report.database && report.database->repeated.count > 0;
  return report.remarks.empty() && !areNamesRepeated ? 0 : kHasRemarks;
}

}  // namespace inspect
