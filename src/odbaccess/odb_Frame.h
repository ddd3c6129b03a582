// One instant of a step.
//
//     const odb_SequenceFrame& frames = step.frames();
//     for (int i = 0; i < frames.size(); ++i) {
//       const odb_Frame frame = frames.constGet(i);  // a copy: what it reads goes with it
//       if (const odb_FieldOutput* u = frame.fieldOutputs().ConstFind("U")) use(*u, frame.frameValue());
//     }
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

  // The number that the solver gave it; not the place in the sequence.
  int incrementNumber() const;
  // Time, frequency, load factor: whatever the step advances in.
  double frameValue() const;
  odb_String description() const;

  // The field outputs that this frame has, by name. Good as long as this handle. Throws odb_Exception where the fields
  // of the step cannot be read.
  odb_FieldOutputRepository& fieldOutputs() const;

 private:
  std::shared_ptr<odb_detail::StepStorage> step_;
  int index_;
  mutable std::shared_ptr<odb_detail::FrameContent> content_;
};

// The frames of a step in its order.
class odb_SequenceFrame {
 public:
  odb_SequenceFrame() = default;
  explicit odb_SequenceFrame(std::vector<odb_Frame> frames) : frames_(std::move(frames)) {}

  int size() const { return frames_.size(); }
  // Frame `index`, 0 <= index < size(). Good as long as this sequence.
  const odb_Frame& constGet(int index) const { return frames_.constGet(index); }

 private:
  cow_List<odb_Frame> frames_;
};
