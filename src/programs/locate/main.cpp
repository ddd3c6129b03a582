// `kolvex locate`: reads the arguments, locates, says where.

#include <exception>
#include <new>

#include "locate_records.h"
#include "process/prepare_process.h"
#include "tool/console.h"

int main(int argc, char** argv) {
  prepareProcess();
  requireRoomOnStack();
  try {
    inspect::LocateOptions options;
    const tool::Command command = inspect::locateCommand(options);
    const tool::Outcome outcome = command.parse({argv + 1, argv + argc});
    if (outcome.isDone) return outcome.finish();
    if (options.names.empty() && options.params.empty()) return command.refuse("no record is named").finish();
    return inspect::locateRecords(options);
  } catch (const std::bad_alloc&) {
    tool::complain("out of memory");
  } catch (const std::exception& error) {
    tool::complain(error.what());
  }
  return tool::kFailed;
}
