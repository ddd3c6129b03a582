// How a quantity at one point of the model, or over a set of it, runs through a step.
//
//     const odb_SequenceSequenceFloat samples = region.historyOutputs()["U1"].data();
//     for (int i = 0; i < samples.size(); ++i) plot(samples.constGet(i)[0], samples.constGet(i)[1]);
#pragma once

#include <memory>
#include <utility>

#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
struct HistoryOutputStorage;
}

// A handle; it keeps the file open after the database is closed.
class odb_HistoryOutput {
 public:
  explicit odb_HistoryOutput(std::shared_ptr<const odb_detail::HistoryOutputStorage> storage)
      : storage_(std::move(storage)) {}
  virtual ~odb_HistoryOutput() = default;
  odb_HistoryOutput(const odb_HistoryOutput&) = default;
  odb_HistoryOutput& operator=(const odb_HistoryOutput&) = default;

  // The samples, read at each call: of each its abscissae (as a rule one, the time), then the value. Throws
  // odb_Exception where they cannot be read.
  virtual odb_SequenceSequenceFloat data() const;

  odb_String name() const;

 private:
  std::shared_ptr<const odb_detail::HistoryOutputStorage> storage_;
};
