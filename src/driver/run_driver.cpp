#include "driver/run_driver.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <optional>
#include <string>

#include "base/control_characters.h"
#include "driver/command_line.h"
#include "driver/read_configuration.h"
#include "odbaccess/odb_api.h"
#include "process/confinement.h"
#include "process/stack_room.h"
#include "result/completion.h"
#include "result/extraction_switches.h"
#include "result/result_file.h"
#include "traversal/traverse_steps.h"

namespace {

constexpr const char* kResultName = "params.txt";
constexpr const char* kMarkerName = "paramsdone.txt";
constexpr const char* kUpgradedName = "upgradedOdb";

// The database to read: the one given, or an upgraded copy of it in the working directory.
odb_String upgradedIfNeeded(const odb_String& name) {
  if (!isUpgradeRequiredForOdb(name)) return name;
  upgradeOdb(name, kUpgradedName);
  odb_String upgraded(kUpgradedName);
  upgraded.append(".odb");
  return upgraded;
}

// The set only has to exist: the extraction covers the whole model with it as without it.
void requireElementSet(odb_Odb& odb, const odb_String& name) {
  if (odb.rootAssembly().elementSets(false).ConstFind(name) != nullptr) return;
  std::cerr << "An assembly level elset " << base::escaped(name.cStr())
            << " does not exist in the output database :" << base::escaped(odb.name().cStr()) << std::endl;
  odb.close();
  std::exit(0);
}

[[noreturn]] void giveUp(const std::string& reason) {
  std::cerr << "**ERROR** " << reason << std::endl;
  std::exit(1);
}

constexpr const char* kIncomplete = "params.txt could not be written completely";

std::string systemReason() { return std::strerror(errno); }

// From here on the directory is this run's, and no marker speaks for what an earlier one has left.
void takeDirectory(const DirectoryLock& lock) {
  if (lock.isElsewhere()) giveUp("another run is at work in this directory");
  if (!removeMarker(kMarkerName)) giveUp("paramsdone.txt of an earlier run cannot be removed: " + systemReason());
  if (!makeRoomOnStack()) giveUp(kNoRoomOnStack);
}

// Returns what went wrong; nothing when the results are complete under their marker.
std::string extract(odb_Odb& odb) {
  const ResultPlace place(kResultName);
  if (!place.isOpen()) return kIncomplete;
  ResultFile result(kResultName);
  Marker marker(kMarkerName);
  // All files are open, and what stands in the database comes from anywhere.
  confineToOpenFiles();
  traverseSteps(odb, nullptr, result);
  odb.close();
  if (!result.close() || !place.isInPlace()) return kIncomplete;
  if (!marker.publish()) return "paramsdone.txt could not be written: " + systemReason();
  return {};
}

}  // namespace

int runDriver(int argc, char** argv) {
  // Before anything that can fail: whatever becomes of the run, its caller finds no marker but its own. Who asks for
  // help, or wrongly, has asked for no run, and what is there stays.
  std::optional<DirectoryLock> lock;
  if (asksForRun(argc, argv)) takeDirectory(lock.emplace("."));
  const CommandLine commandLine = readCommandLine(argc, argv);
  readConfiguration(commandLine.configuration.cStr(), extractionSwitches());
  odb_Odb& odb = openOdb(upgradedIfNeeded(commandLine.database), true, false);
  if (commandLine.elementSetGiven) requireElementSet(odb, commandLine.elementSet);
  const std::string failure = extract(odb);
  if (!failure.empty()) giveUp(failure);
  return 0;
}
