// Steps and their frames.
#pragma once

#include <memory>
#include <vector>

#include "odbaccess/odb_FieldOutput.h"
#include "odbaccess/odb_History.h"
#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_Sequence.h"
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

// The steps by name; its iterator goes in the order in which the steps were made.
class odb_StepRepository {
 public:
  odb_StepRepository() = default;
  explicit odb_StepRepository(const std::vector<odb_Step>& stepsInOrder);

  int size() const { return static_cast<int>(order_.size()); }
  const odb_Step* ConstFind(const odb_String& key) const { return steps_.ConstFind(key); }
  void CheckKey(const odb_String& key) const { steps_.CheckKey(key); }
  odb_Step& operator[](const odb_String& key) const { return steps_[key]; }

 private:
  friend class odb_StepRepositoryIT;

  odb_Repository<odb_String, odb_Step> steps_;
  std::vector<odb_String> order_;
};

// `for (it.first(); !it.isDone(); it.next()) use(it.currentKey());` while the repository lives.
class odb_StepRepositoryIT {
 public:
  explicit odb_StepRepositoryIT(const odb_StepRepository& repository) : order_(&repository.order_) {}

  void first() { at_ = 0; }
  void next() { ++at_; }
  bool isDone() const { return at_ >= order_->size(); }
  const odb_String& currentKey() const { return (*order_)[at_]; }

 private:
  const std::vector<odb_String>* order_;
  std::size_t at_ = 0;
};
