// Files of VTK, XML and legacy, up to the rows of their fields.

#include "fuzz_input.h"
#include "importers/input/diagnostics.h"
#include "importers/vtk/field_plan.h"
#include "importers/vtk/frame_rows.h"
#include "importers/vtk/mesh.h"
#include "importers/vtk/run_frames.h"

namespace {

using namespace importers::vtk;
using importers::ElementGroup;

void readFrame(const RunFrame& frame, const std::vector<FieldPlan>& plans, Mesh& mesh) {
  const GridOfFrames grid = mesh.grid(mesh.add(frame));
  for (const FieldPlan& plan : plans) {
    const std::vector<int> labels = labelsOf(frame, grid, plan);
    require(labels.size() == countRows(frame, plan));
    std::vector<float> values;
    readRows(frame, grid, plan, values);
    require(values.size() == labels.size() * plan.columns.size());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ::InputFile file(data, size);
  const importers::WarningSink silent = [](const base::Diagnostic&) {};
  try {
    const RunFrames run = readRun(file.path(), false, false, silent);
    const std::vector<FieldPlan> plans = planFields(run, {}, silent);
    Mesh mesh;
    for (const RunFrame& frame : run.frames) readFrame(frame, plans, mesh);
    for (const ElementGroup* const group : mesh.groups()) {
      require(group->connectivity.size() == group->labels.size() * static_cast<std::size_t>(group->nodesPerElement));
    }
  } catch (const importers::ImportError&) {
    return 0;
  }
  return 0;
}
