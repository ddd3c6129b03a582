// The process: starts the access library, runs the extraction inside a guard, stops the library.

#include <cstdio>
#include <cstdlib>

#include "driver/api_lifecycle.h"
#include "driver/run_driver.h"
#include "odbaccess/odb_api.h"
#include "process/prepare_process.h"

namespace {

constexpr const char* kFailure = "ODB Application exited with error(s)\n";

}  // namespace

int main(int argc, char** argv) {
  prepareProcess();
  keepMemory();
  startApi();
  std::atexit(stopApiIfRunning);
  int result = 0;
  try {
    result = runDriver(argc, argv);
  } catch (const nex_Exception& error) {
    // The status stays 0: callers look for the completion marker.
    std::fprintf(stderr, "%s\n", error.UserReport().cStr());
    std::fputs(kFailure, stderr);
  } catch (...) {
    std::fputs(kFailure, stderr);
  }
  stopApiIfRunning();
  return result;
}
