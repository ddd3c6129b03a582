#include "show.h"

#include <unistd.h>

#include "chosen_contents.h"
#include "contents_json.h"
#include "contents_table.h"
#include "inspect/configuration.h"
#include "inspect/open_database.h"
#include "inspect/records.h"
#include "inspect/starting_configuration.h"
#include "record_columns.h"
#include "tables/json_table.h"
#include "tool/console.h"

namespace inspect {

namespace {

using Take = std::function<void(const Record&)>;

void forEachChosen(const RecordList& records, const Choice& choice, const Take& take) {
  records.forEach([&](const Record& record) {
    const std::string_view set = record.set == nullptr ? std::string_view() : record.set->name;
    if (choice.takesStep(record.step, record.stepName) && choice.takesField(record.field) && choice.takesSet(set)) {
      take(record);
    }
    return true;
  });
}

void printJson(const RecordList& records, const Choice& choice) {
  tables::TextOutput output(STDOUT_FILENO, "standard output");
  output.write("{\"records\":");
  tables::JsonTable table(output);
  std::vector<tables::Column> columns = partColumns();
  columns.insert(columns.begin(), {"name"});
  table.begin(columns);
  PartCells parts;
  forEachChosen(records, choice, [&](const Record& record) {
    const std::string name = records.nameOf(record);
    std::vector<tables::Cell> cells = {name};
    const std::vector<tables::Cell>& found = parts.of({record});
    cells.insert(cells.end(), found.begin(), found.end());
    table.row(cells);
  });
  table.end();
  output.write("}\n");
  output.flush();
}

void printRecords(const ShowOptions& options) {
  const ExtractionSwitches switches = switchesOf(readConfigurationFile(options.records));
  const RecordList records(openDatabase(options.database), switches);
  const Choice choice(options);
  if (options.isJson) return printJson(records, choice);
  forEachChosen(records, choice, [&](const Record& record) { tool::print(records.nameOf(record) + "\n"); });
}

}  // namespace

int show(const ShowOptions& options) {
  if (!options.records.empty()) {
    printRecords(options);
  } else if (options.isConfiguration) {
    tool::print(startingConfiguration(openDatabase(options.database), options.database));
  } else {
    const ChosenContents contents = chosenContents(options);
    tool::print(options.isJson ? contentsJson(contents) : contentsTable(contents, options.isAll));
  }
  tool::finishOutput();
  return 0;
}

}  // namespace inspect
