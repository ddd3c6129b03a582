// One run of the extraction, from the command line to the completion marker.
#pragma once

// Reads the command line, checks the files, reads the configuration, opens the database (upgraded to a copy where it is
// of an older layout), extracts into params.txt and, when that is complete, writes paramsdone.txt, both in the working
// directory. Returns 0. A command line that cannot be run, and results that could not be written, end the process with
// status 1; the help option and an element set that does not exist with status 0. Exceptions of the access library
// pass through: what was written to params.txt stays, the marker is missing.
int runDriver(int argc, char** argv);
