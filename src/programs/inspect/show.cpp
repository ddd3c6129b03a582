#include "show.h"

#include "driver/read_configuration.h"
#include "inspect/open_database.h"
#include "inspect/records.h"
#include "tool/console.h"

namespace inspect {

int show(const ShowOptions& options) {
  ExtractionSwitches switches;
  readConfiguration(options.records, switches);
  const RecordList records(openDatabase(options.database), switches);
  records.forEach([&](const Record& record) {
    tool::print(records.nameOf(record) + "\n");
    return true;
  });
  tool::finishOutput();
  return 0;
}

}  // namespace inspect
