// One step.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"

// Announces the step on standard output, writes its mass records, then hands its history regions (by name) and its
// frames (in their order) on, each as far as its switch asks for it. With a depth below 1 only the mass is written.
void processStep(const odb_Odb& odb, const odb_Step& step, std::ostream& out, const odb_String& indent, int depth);
