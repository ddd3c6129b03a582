#include "tool/program.h"

#include <cstdio>
#include <exception>
#include <new>

#include "process/prepare_process.h"

namespace tool {

namespace {

// Without memory of its own: it may be what is missing.
void say(const char* reason) {
  std::fputs(reason, stderr);
  std::fputs("\n", stderr);
}

}  // namespace

int runProgram(int argc, char** argv, const std::function<int(std::vector<std::string> arguments)>& run, int failed) {
  prepareProcess();
  requireRoomOnStack();
  try {
    return run({argv + 1, argv + argc});
  } catch (const std::bad_alloc&) {
    say("out of memory");
  } catch (const std::exception& error) {
    say(error.what());
  }
  return failed;
}

}  // namespace tool
