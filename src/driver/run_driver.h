// One run of the extraction, from the command line to the completion marker.
#pragma once

// Where the arguments ask for a run: locks the working directory and removes the marker of an earlier run, before any
// file is looked for; then checks the named files, reads the configuration, opens the database (upgraded to a copy
// where it is of an older layout), extracts into params.txt and, when that is complete, writes paramsdone.txt, both in
// the working directory. Returns 0. A command line that cannot be run, another run at work in the directory, a marker
// that cannot be removed (nothing is created or changed then), and results that could not be written end the process
// with status 1; the help option and an element set that does not exist with status 0. Exceptions of the access library
// pass through: what was written to params.txt stays, the marker is missing.
int runDriver(int argc, char** argv);
