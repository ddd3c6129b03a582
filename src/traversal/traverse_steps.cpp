#include "traversal/traverse_steps.h"

#include "traversal/process_step.h"

namespace {

// A guard against runaway nesting, counted down level by level.
constexpr int kDepthBudget = 9999;

}  // namespace

void traverseSteps(const odb_Odb& odb, const void*, std::ostream& out) {
  // The first access of the walk: a damaged sector definition ends the run before any record is written.
  if (odb.hasSectorDefinition()) static_cast<void>(odb.sectorDefinition().symmetryAxis());
  odb_StepRepository& steps = odb.steps();
  odb_StepRepositoryIT at(steps);
  for (at.first(); !at.isDone(); at.next()) {
    const odb_Step step = steps[at.currentKey()];
    processStep(odb, step, out, "    ", kDepthBudget);
  }
}
