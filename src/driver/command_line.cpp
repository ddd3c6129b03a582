#include "driver/command_line.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

#include "base/control_characters.h"

namespace {

constexpr const char* kUsage =
    " Program to open an output database and extract output parameters\n"
    " from the database and write them to an ASCII file.\n"
    " Usage: kolvex quarnish -odb <odb_filename> \n"
    "                                 -config <config_filename> \n"
    "                                 -elset(optional) <elsetName> \n"
    " Requirements:\n"
    " 1. -odb   : Name of the output database.\n"
    " 2. -config: Name of the configuration file. \n"
    " 3. -elset : Name of the assembly level element set.\n"
    "             Search will be done only for element \n"
    "             belonging to this set.\n"
    "             If this parameter is not provided, search \n"
    "             will be performed over the entire model.\n"
    " 4. -help  : Print usage\n";

[[noreturn]] void exitWithUsage(int status) {
  std::cout << kUsage;
  std::exit(status);
}

bool exists(const odb_String& name) {
  struct stat status {};
  return ::stat(name.cStr(), &status) == 0;
}

enum class Option { none, database, configuration, elementSet, help };

// Two characters tell the options apart.
Option optionOf(const char* argument) {
  const auto is = [argument](const char* option) { return std::strncmp(argument, option, 2) == 0; };
  if (is("-o**")) return Option::database;
  if (is("-c**")) return Option::configuration;
  if (is("-e**")) return Option::elementSet;
  return is("-h**") ? Option::help : Option::none;
}

// Calls take(option, argument, value) for each option, first to last. The value is the argument behind it, whatever
// that looks like; null where there is none, and for the help option.
template <class Take>
void forEachOption(int argc, char** argv, Take&& take) {
  for (int i = 0; i < argc; ++i) {
    const char* const argument = argv[i];
    const Option option = optionOf(argument);
    if (option == Option::none) continue;
    const bool hasValue = option != Option::help && i + 1 < argc;
    take(option, argument, hasValue ? argv[++i] : nullptr);
  }
}

void requireDatabase(const odb_String& name) {
  if (exists(name)) return;
  std::cerr << "**ERROR** output database  " << base::escaped(name.cStr()) << " does not exist\n" << std::endl;
  std::exit(1);
}

void requireConfiguration(const odb_String& name) {
  if (exists(name)) return;
  std::cerr << "**ERROR** configuration file " << base::escaped(name.cStr()) << " does not exist\n" << std::endl;
  std::exit(1);
}

[[noreturn]] void exitWithoutValue(const char* option) {
  std::cerr << "**ERROR** option " << base::escaped(option) << " needs a value\n";
  exitWithUsage(1);
}

[[noreturn]] void exitWithout(const char* what) {
  std::cerr << "**ERROR** " << what << " name is not provided\n";
  exitWithUsage(1);
}

}  // namespace

odb_String completedDatabaseName(const odb_String& name) {
  const atr_String text(name.cStr());
  odb_String completed = name;
  if (text.Find(".odb", 0) == text.length()) completed.append(".odb");
  return completed;
}

bool asksForRun(int argc, char** argv) {
  bool isDatabaseGiven = false;
  bool isConfigurationGiven = false;
  bool isUsable = true;
  forEachOption(argc, argv, [&](Option option, const char*, const char* value) {
    isDatabaseGiven = isDatabaseGiven || option == Option::database;
    isConfigurationGiven = isConfigurationGiven || option == Option::configuration;
    isUsable = isUsable && value != nullptr;
  });
  return isDatabaseGiven && isConfigurationGiven && isUsable;
}

CommandLine readCommandLine(int argc, char** argv) {
  CommandLine commandLine;
  bool databaseGiven = false;
  bool configurationGiven = false;
  forEachOption(argc, argv, [&](Option option, const char* argument, const char* value) {
    if (option == Option::help) exitWithUsage(0);
    if (value == nullptr) exitWithoutValue(argument);
    if (option == Option::database) {
      commandLine.database = completedDatabaseName(value);
      requireDatabase(commandLine.database);
      databaseGiven = true;
    } else if (option == Option::configuration) {
      commandLine.configuration = odb_String(value);
      requireConfiguration(commandLine.configuration);
      configurationGiven = true;
    } else {
      commandLine.elementSet = odb_String(value);
      commandLine.elementSetGiven = true;
    }
  });
  if (!databaseGiven) exitWithout("output database");
  if (!configurationGiven) exitWithout("configuration file");
  return commandLine;
}
