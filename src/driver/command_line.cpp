#include "driver/command_line.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

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

// Two characters tell the options apart.
bool isOption(const char* argument, const char* option) { return std::strncmp(argument, option, 2) == 0; }

void requireDatabase(const odb_String& name) {
  if (exists(name)) return;
  std::cerr << "**ERROR** output database  " << name.cStr() << " does not exist\n" << std::endl;
  std::exit(1);
}

void requireConfiguration(const odb_String& name) {
  if (exists(name)) return;
  std::cerr << "**ERROR** configuration file " << name.cStr() << " does not exist\n" << std::endl;
  std::exit(1);
}

// Walks the arguments, handing out an option's value.
class Arguments {
 public:
  Arguments(int count, char** arguments) : count_(count), arguments_(arguments) {}

  bool isDone() const { return at_ >= count_; }
  const char* current() const { return arguments_[at_]; }
  void next() { ++at_; }

  const char* takeValue() {
    if (at_ + 1 < count_) return arguments_[++at_];
    std::cerr << "**ERROR** option " << current() << " needs a value\n";
    exitWithUsage(1);
  }

 private:
  int count_;
  char** arguments_;
  int at_ = 0;
};

}  // namespace

odb_String completedDatabaseName(const odb_String& name) {
  const atr_String text(name.cStr());
  odb_String completed = name;
  if (text.Find(".odb", 0) == text.length()) completed.append(".odb");
  return completed;
}

CommandLine readCommandLine(int argc, char** argv) {
  CommandLine commandLine;
  bool databaseGiven = false;
  bool configurationGiven = false;
  for (Arguments arguments(argc, argv); !arguments.isDone(); arguments.next()) {
    if (isOption(arguments.current(), "-o**")) {
      commandLine.database = completedDatabaseName(arguments.takeValue());
      requireDatabase(commandLine.database);
      databaseGiven = true;
    } else if (isOption(arguments.current(), "-c**")) {
      commandLine.configuration = odb_String(arguments.takeValue());
      requireConfiguration(commandLine.configuration);
      configurationGiven = true;
    } else if (isOption(arguments.current(), "-e**")) {
      commandLine.elementSet = odb_String(arguments.takeValue());
      commandLine.elementSetGiven = true;
    } else if (isOption(arguments.current(), "-h**")) {
      exitWithUsage(0);
    }
  }
  if (!databaseGiven) {
    std::cerr << "**ERROR** output database name is not provided\n";
    exitWithUsage(1);
  }
  if (!configurationGiven) {
    std::cerr << "**ERROR** configuration file name is not provided\n";
    exitWithUsage(1);
  }
  return commandLine;
}
