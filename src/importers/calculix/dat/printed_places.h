// Finds out which step and which frame each printed table belongs to: the tables themselves only know a time.
//
// A deck with two steps, *STATIC to the time 1 and *STATIC to the time 1.0001 with *NODE PRINT, FREQUENCY=3, lets the
// solver print
//
//    displacements (vx,vy,vz) for set TOP and time  0.1000000E+01
//    displacements (vx,vy,vz) for set TOP and time  0.1000030E+01
//    displacements (vx,vy,vz) for set TOP and time  0.1000060E+01
//    displacements (vx,vy,vz) for set TOP and time  0.1000090E+01
//    displacements (vx,vy,vz) for set TOP and time  0.1000100E+01
//
// and the status file has increments of 1e-5 in the second step. The tables are those of
//
//    step 1   increment 1    time in the step 1
//    step 2   increment 3    3e-5
//             increment 6    6e-5
//             increment 9    9e-5
//             increment 10   1e-4
//
// These are new frames, unless the result file has them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "importers/calculix/dat/printed_tables.h"
#include "importers/calculix/steps/frames.h"
#include "importers/calculix/steps/run_steps.h"

namespace importers::calculix {

struct TablePlace {
  int step = 0;                      // 0 for none
  std::optional<FrameNumber> frame;  // of the result file, or after its last one: the new frames
  bool isImaginary = false;
  std::string part;  // see PrintedTable
};

struct PrintedPlaces {
  std::vector<TablePlace> tables;
  std::vector<RunFrame> frames;  // that the result file lacks, numbered after its own
  std::vector<PrintedProblem> problems;
  // Why the tables cannot be of this run; empty if they can.
  std::string contradiction;
  std::int64_t contradictionLine = 0;
};

// `tables` are all of a file in its order, `steps` what is known of the run, `frames` those of the result file,
// `isComplete` whether neither file is truncated. A pure function; see printed_outputs.h and increment_matching.h for
// how it decides.
PrintedPlaces findPlaces(std::span<const PrintedTable> tables, const RunSteps& steps, const Frames& frames,
                         bool isComplete);

}  // namespace importers::calculix
