// The files of a run in formats of VTK as a Source.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "importers/run/field_shapes.h"
#include "importers/run/source.h"

namespace importers::vtk {

struct VtkRun {
  std::string results;
  bool isStrict = false;
  bool isSeries = false;              // with all files of the numbered series
  std::vector<std::string> idArrays;  // cell arrays whose values become element sets
  ShapeChoice shapes;
};

// `warn` must live as long as the source.
std::unique_ptr<Source> openVtk(const VtkRun& run, const WarningSink& warn);

}  // namespace importers::vtk
