// One history output.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"

// Writes the samples of one history as one record, and its largest and smallest value as two, each under its switch.
// Only the last number of a sample, the value, takes part in the extremes; the abscissae before it are written with the
// samples. A history without samples writes "None" for its samples and no extremes.
//
// The step name and the output's name are cleaned for the record names; the label (which may be empty) is not.
// Exceptions of the library pass through.
void writeHistoryOutput(const odb_HistoryOutput& output, std::ostream& out, odb_String stepName, odb_String label,
                        odb_String indent);
