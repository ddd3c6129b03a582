// `kolvex show`, `check`, ...: one program, which goes by the name that it is started under.

#include <exception>
#include <new>
#include <string>
#include <vector>

#include "process/prepare_process.h"
#include "show.h"
#include "show_options.h"
#include "tool/console.h"

namespace {

using Arguments = std::vector<std::string>;

int show(const Arguments& arguments) {
  inspect::ShowOptions options;
  const tool::Command command = inspect::showCommand(options);
  const tool::Outcome outcome = command.parse(arguments);
  if (outcome.isDone) return outcome.finish();
  return inspect::show(options);
}

}  // namespace

int main(int argc, char** argv) {
  prepareProcess();
  try {
    return show({argv + 1, argv + argc});
  } catch (const std::bad_alloc&) {
    tool::complain("out of memory");
  } catch (const std::exception& error) {
    tool::complain(error.what());
  }
  return tool::kFailed;
}
