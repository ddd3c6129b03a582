// `kolvex diff`: reads the arguments, compares, says what differs.

#include <exception>
#include <new>

#include "diff_records.h"
#include "process/prepare_process.h"
#include "tool/console.h"

int main(int argc, char** argv) {
  prepareProcess();
  requireRoomOnStack();
  try {
    inspect::DiffOptions options;
    const tool::Command command = inspect::diffCommand(options);
    const tool::Outcome outcome = command.parse({argv + 1, argv + argc});
    if (outcome.isDone) return outcome.finish();
    if (options.databases.size() > 2) return command.refuse("--odb is given twice at most").finish();
    return inspect::diffRecords(options);
  } catch (const std::bad_alloc&) {
    tool::complain("out of memory");
  } catch (const std::exception& error) {
    tool::complain(error.what());
  }
  return inspect::kTrouble;
}
