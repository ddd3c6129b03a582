// Rows of fields and their labels, out of the files of a frame.
#pragma once

#include <vector>

#include "importers/vtk/field_plan.h"
#include "importers/vtk/mesh.h"

namespace importers::vtk {

// Labels of the points or cells of those pieces that have the field, copies left out.
std::vector<int> labelsOf(const RunFrame& frame, const GridOfFrames& grid, const FieldPlan& plan);

// The rows of the same, [rows, plan.columns]. Number is float or double. `values` is resized. Throws ImportError.
template <typename Number>
void readRows(const RunFrame& frame, const GridOfFrames& grid, const FieldPlan& plan, std::vector<Number>& values);

// How many they are, copies left out, without reading anything but what readRun() has.
std::size_t countRows(const RunFrame& frame, const FieldPlan& plan);

}  // namespace importers::vtk
