// Delivers the blocks of a result file (.frd).
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/unfilled.h"
#include "importers/calculix/contents.h"
#include "importers/calculix/deck/deck.h"
#include "importers/calculix/frd/frd_reader.h"
#include "importers/calculix/run_outline.h"
#include "importers/run/sink.h"
#include "importers/run/source.h"

namespace importers::calculix {

class ResultDelivery {
 public:
  // Result blocks whose ordinals are in `leftOut` are skipped. All must outlive this object.
  ResultDelivery(const std::string& path, const Deck& deck, const Plan& plan, const std::set<std::size_t>& leftOut,
                 Sink& sink);

  // Reads the file once more: its mesh and the chosen rows go to the sink. Throws ImportError for a block that cannot
  // be read, and for results without a model.
  void run(const ProgressSink& progress);

 private:
  void take(const FrdNodes& nodes);
  void take(const FrdElements& elements);
  void take(FrdResult& block);
  // What a target takes of all rows of a block: in the block's own memory, in the place of what it held, where nobody
  // else needs it.
  std::span<const float> rowsFor(const Target& target, FrdResult& block);
  // Labels and values of those rows that a target takes which does not take all; valid until the next call.
  std::pair<std::span<const int>, std::span<const float>> keptRows(const Target& target, std::span<const int> labels,
                                                                   std::span<const float> rows);
  void takePeaks(const FrdResult& block);
  // Decides which rows of the next result block are wanted.
  bool startResult(std::size_t ordinal);

  std::string path_;
  const Deck& deck_;
  const Plan& plan_;
  const std::set<std::size_t>& leftOut_;
  Sink& sink_;

  std::vector<const Target*> targets_;                     // of the block being read
  std::multimap<std::size_t, const PeakTarget*> peaksOf_;  // chosen ones, by the ordinals of both of their blocks
  // Real blocks whose imaginary ones are still to come, by their ordinals.
  std::map<std::size_t, FrdResult> real_;
  base::UnfilledVector<float> rows_;
  base::UnfilledVector<float> imaginaryRows_;
  std::vector<int> keptLabels_;
  std::vector<float> kept_;
};

// Reads all rows of a result file: `leaveOut` is asked of each result that cannot be read or imported. An ImportError
// for the first one that is not left out.
void checkAllRows(const std::string& path, const LeaveOut& leaveOut);

}  // namespace importers::calculix
