// The steps of a database.
//
//     odb_StepRepository& steps = odb.steps();
//     odb_StepRepositoryIT it(steps);
//     for (it.first(); !it.isDone(); it.next()) use(steps[it.currentKey()]);
#pragma once

#include <cstddef>
#include <vector>

#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_Step.h"
#include "odbaccess/odb_String.h"

// The steps by name; its iterator goes in the order in which the steps were made.
class odb_StepRepository {
 public:
  odb_StepRepository() = default;
  explicit odb_StepRepository(const std::vector<odb_Step>& stepsInOrder);

  int size() const { return static_cast<int>(order_.size()); }
  // Null where there is no such step.
  const odb_Step* ConstFind(const odb_String& key) const { return steps_.ConstFind(key); }
  // Throw odb_Exception where there is no such step. The step is good while the database is open.
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
