// The configuration file.
#pragma once

#include <string>

#include "result/extraction_switches.h"

// Reads the file and sets the switches. From the first line that contains "ODB EXTRACTIONS" on, a keyword anywhere in a
// line counts, inside longer words too; there is no comment syntax. A file that cannot be opened or is not
// a regular one is announced on standard output and changes nothing. A line with "PERCENTAGE" but no "=", one of more
// than 1 MiB, and a file that cannot be read to its end, end the process with status 1 and a message on standard error.
void readConfiguration(const std::string& path, ExtractionSwitches& switches);

// Sets the switches of the keywords that `line` contains.
void applyConfigurationLine(const std::string& line, ExtractionSwitches& switches);
