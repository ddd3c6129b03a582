// The command line of the extraction.
#pragma once

#include "odbaccess/odb_api.h"

struct CommandLine {
  odb_String database;  // ".odb" appended where the name given does not contain it
  odb_String configuration;
  odb_String elementSet;
  bool elementSetGiven = false;
};

// Reads the arguments from the first (the program's own path) to the last; only the first two characters of an option
// count, other arguments are passed over, a later option replaces an earlier one. What cannot be run ends the process:
// a named file that does not exist at once, a missing option after all have been read (both status 1, message on
// standard error), the help option at once (usage on standard output, status 0).
CommandLine readCommandLine(int argc, char** argv);

// The name with ".odb" appended, unless it contains ".odb" anywhere.
odb_String completedDatabaseName(const odb_String& name);
