// The outputs of a run that its printed tables show: which tables the solver has printed together.
//
// Tables carry a title, a set and a time; nothing but the next title ends an output. Of these lines
//
//    displacements (vx,vy,vz) for set TOP and time  0.1000000E+01
//    forces (fx,fy,fz) for set TOP and time  0.1000000E+01
//    displacements (vx,vy,vz) for set TOP and time  0.1000000E+01
//    forces (fx,fy,fz) for set TOP and time  0.1000000E+01
//        E I G E N V A L U E   O U T P U T                       2 modes
//                       E I G E N V A L U E    N U M B E R     1
//    displacements (vx,vy,vz) for set TOP and time  0.2000000E+01
//                       E I G E N V A L U E    N U M B E R     2
//    displacements (vx,vy,vz) for set TOP and time  0.2000000E+01
//    displacements (vx,vy,vz) for set TOP and time  0.2000000E+01
//
// come the outputs
//
//    1  time 1, displacements and forces   before the step of the modes
//    2  time 1, displacements and forces   the same: displacements came again, so this is another increment
//    3  mode 1 of the step of the modes
//    4  mode 2 of the step of the modes
//    5  time 2, displacements              after the step of the modes
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "importers/calculix/dat/print_plans.h"
#include "importers/calculix/dat/printed_tables.h"
#include "importers/calculix/steps/run_steps.h"

namespace importers::calculix {

struct PrintedOutput {
  FrameKind kind = FrameKind::time;
  double value = 0.0;  // the printed time, the frequency, the factor
  int mode = 0;        // the solver's number of it, from 1 for each nodal diameter
  int place = 0;       // of the mode among all of its step, from 1
  std::optional<int> nodalDiameter;
  std::int64_t line = 0;  // of its first table
  std::vector<std::size_t> tables;

  int step = 0;  // of all but times
  // Times are of a step between these two.
  int after = 0;
  std::optional<int> before;
  std::vector<int> plans;  // times: by which such tables are printed
};

struct PrintedOutputs {
  std::vector<PrintedOutput> outputs;  // in file order
  // Of each table, where it is known without a frame, as lists of modes are; else 0.
  std::vector<int> steps;
  std::vector<bool> areImaginary;
  std::vector<std::string> parts;  // what distinguishes a table from others of its kind in the output
  // The first table that no step of the run can have.
  std::optional<std::size_t> misfit;
};

// `tables` in file order. Tables of eigenvalues, buckling factors and factors of a steady state begin a step of their
// kind, or its next mode, diameter or frequency. All others belong together until the time changes or a table comes
// more often than in any plan. Without plans a table may be repeated in other axes or with equal rows.
PrintedOutputs findOutputs(std::span<const PrintedTable> tables, const RunSteps& steps, const PrintPlans& plans);

}  // namespace importers::calculix
