#include "process/confinement.h"

#ifdef KOLVEX_CONFINE

#include <sys/prctl.h>

#include "process/call_filter.h"
#include "process/file_rules.h"

namespace {

// Both take that no program started from here on gains rights.
bool giveUpNewRights() { return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0; }

}  // namespace

Confinement confineToOpenFiles() {
  if (!giveUpNewRights()) return {};
  // In this order: the filter does not let pass what makes rules.
  const bool ofFiles = allowRenamingIn(".");
  return {filterCalls(CallSet::openFiles), ofFiles};
}

Confinement confineToOneFile() {
  if (!giveUpNewRights()) return {};
  const bool ofFiles = allowNoFiles();
  return {filterCalls(CallSet::oneFile), ofFiles};
}

Confinement confineToWriting(const char* path) {
  if (!giveUpNewRights()) return {};
  const bool ofFiles = allowWriting(path);
  return {filterCalls(CallSet::writing), ofFiles};
}

#else

Confinement confineToOpenFiles() { return {}; }
Confinement confineToOneFile() { return {}; }
Confinement confineToWriting(const char*) { return {}; }

#endif
