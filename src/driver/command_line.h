// The command line of the extraction.
#pragma once

#include "odbaccess/odb_api.h"

struct CommandLine {
  odb_String database;  // ".odb" appended where the name given does not contain it
  odb_String configuration;
  odb_String elementSet;
  bool elementSetGiven = false;
};

// Only the first two characters of an option count, other arguments are passed over, a later option replaces an earlier
// one; the first argument, the program's own path, is looked at like any other.

// Whether the arguments ask for a run: a database and a configuration are named, no option lacks its value, and nobody
// asks for help. Looks at no file and takes no memory, so that it can be asked before anything can go wrong. Where it
// says no, readCommandLine() ends the process.
bool asksForRun(int argc, char** argv);

// Reads the arguments one by one. What cannot be run ends the process: a named file that does not exist at once, before
// later arguments are looked at; an option without its value likewise; a missing option after all have been read (all
// three status 1, message on standard error); the help option at once (usage on standard output, status 0).
CommandLine readCommandLine(int argc, char** argv);

// The name with ".odb" appended, unless it contains ".odb" anywhere.
odb_String completedDatabaseName(const odb_String& name);
