// A step of the analysis.
//
//     const odb_Step& step = odb.steps()["Step-1"];
//     std::printf("%d frames\n", step.frames().size());
//     if (step.mass() != -1.0) use(step.mass(), step.massCenter());
#pragma once

#include <memory>
#include <utility>

#include "odbaccess/odb_Frame.h"
#include "odbaccess/odb_HistoryRegion.h"
#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
class StepStorage;
}

// A handle. What cannot be read is an odb_Exception.
class odb_Step {
 public:
  explicit odb_Step(std::shared_ptr<odb_detail::StepStorage> storage) : storage_(std::move(storage)) {}

  odb_String name() const;
  odb_String description() const;

  // In the model's units; exactly -1.0 when the step has no mass information.
  double mass() const;
  // Three coordinates; six moments in the order 11, 22, 33, 12, 13, 23. Empty when the step has none.
  odb_SequenceDouble massCenter() const;
  odb_SequenceDouble inertiaAboutCenter() const;
  odb_SequenceDouble inertiaAboutOrigin() const;

  // By name, bytes ascending. Good while the database is open.
  odb_HistoryRegionRepository& historyRegions() const;
  // In their order in the step. Good as long as this handle.
  odb_SequenceFrame& frames() const;

 private:
  std::shared_ptr<odb_detail::StepStorage> storage_;
  // Kept by the handle: frames hold on to the step, so the step must not hold on to them.
  mutable std::shared_ptr<odb_SequenceFrame> frames_;
};
