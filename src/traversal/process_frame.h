// One frame.
#pragma once

#include <ostream>

#include "odbaccess/odb_api.h"
#include "traversal/regions.h"

// Announces the frame on standard output and hands each of its field outputs, by name, to processFieldOutput: for the
// whole model, and when sets or invariants are wanted for every element set and node set of the root assembly, of
// every instance and of every part. With a depth of 0 or less it only announces.
void processFrame(const odb_Odb& odb, const odb_Frame& frame, std::ostream& out, const odb_String& stepName,
                  const odb_String& indent, int depth);
// The same with the database's sets, for a walk over many frames.
void processFrame(Regions& regions, const odb_Frame& frame, std::ostream& out, const odb_String& stepName,
                  const odb_String& indent, int depth);
