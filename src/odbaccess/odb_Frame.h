// One instant of a step.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "odbaccess/cow_List.h"
#include "odbaccess/odb_FieldOutput.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
class StepStorage;
struct FrameContent;
}  // namespace odb_detail

// One instant of a step. A handle like odb_FieldOutput: what a copy reads goes with the copy.
class odb_Frame {
 public:
  // Frame `index` (0-based) of `step`.
  odb_Frame(std::shared_ptr<odb_detail::StepStorage> step, int index) : step_(std::move(step)), index_(index) {}

  int incrementNumber() const;
  // Time, frequency, load factor: whatever the step advances in.
  double frameValue() const;
  odb_String description() const;

  // The field outputs that this frame has, by name. Good as long as this handle.
  odb_FieldOutputRepository& fieldOutputs() const;

 private:
  std::shared_ptr<odb_detail::StepStorage> step_;
  int index_;
  mutable std::shared_ptr<odb_detail::FrameContent> content_;
};

class odb_SequenceFrame {
 public:
  odb_SequenceFrame() = default;
  explicit odb_SequenceFrame(std::vector<odb_Frame> frames) : frames_(std::move(frames)) {}

  int size() const { return frames_.size(); }
  const odb_Frame& constGet(int index) const { return frames_.constGet(index); }

 private:
  cow_List<odb_Frame> frames_;
};
