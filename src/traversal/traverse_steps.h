// The top of the walk.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"

// Visits every step of the database in its own order and writes what the switches ask for. The second argument is
// never read. Exceptions of the library pass through; records written before one stay.
void traverseSteps(const odb_Odb& odb, const void* unused, std::ostream& out);
