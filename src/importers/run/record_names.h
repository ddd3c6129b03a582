// Makes names unique in the records of an extraction.
#pragma once

#include <string>

#include "importers/input/diagnostics.h"
#include "importers/run/outline.h"

namespace importers {

// How records of histories end: the output's name cleaned and, where the region has a label, "_" and the label as it
// is.
std::string historyRecord(const std::string& output, const std::string& label);

// Makes blanks of control characters in the names of steps, fields and sets, with a warning. Renumbers or renames
// frames, sets and fields of an outline if two records would have the same name: frames of a step with equal numbers
// are numbered from 1, of two sets the one of nodes ends in "-NODES", fields get a number. A note reports every change;
// it names `file` if it has no other place.
void keepNamesApart(Outline& outline, const std::string& file, const WarningSink& warn);

}  // namespace importers
