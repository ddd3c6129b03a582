#include "driver/api_lifecycle.h"

#include "odbaccess/odb_api.h"

namespace {

unsigned startCount = 0;
int initialised = 0;

// What the runtime of a solver would want to do around the library; there is none here.
void runtimeStartUp(int&) {}
void runtimeShutDown(int&) {}

}  // namespace

void startApi() {
  if (startCount++ != 0) return;
  initialised = 1;
  runtimeStartUp(initialised);
  odb_initializeAPI();
}

void stopApi() {
  if (startCount-- != 1) return;
  initialised = 0;
  odb_finalizeAPI();
  runtimeShutDown(initialised);
}

void stopApiIfRunning() {
  if (initialised != 0) stopApi();
}
