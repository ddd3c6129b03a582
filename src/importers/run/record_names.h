// Keeps the names apart under which records of an imported run come out of an extraction.
#pragma once

#include <string>

#include "importers/input/diagnostics.h"
#include "importers/run/outline.h"

namespace importers {

// How records of histories end: the output's name cleaned and, where the region has a label, "_" and the label as it
// is.
std::string historyRecord(const std::string& output, const std::string& label);

// Makes blanks of control characters in the names of steps, fields and sets, with a warning. Gives frames, sets and
// fields of an outline other numbers and names where two records would have one name: frames of a step with equal
// numbers are numbered from 1, of two sets the one of nodes ends in "-NODES", fields get a number. A note tells of
// every change. `file` is named where nothing else is.
void keepNamesApart(Outline& outline, const std::string& file, const WarningSink& warn);

}  // namespace importers
