// What inputs have left, in directories of their own or in packs.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "batch/packs/pack.h"
#include "batch/state/batch_directory.h"
#include "batch/state/completion_record.h"

namespace batch {

// A record and where it is. Good for as long as the Results that it is from.
class Result {
 public:
  Record record;

  Result(Record found, std::string id, std::string directory)
      : record(std::move(found)), id_(std::move(id)), directory_(std::move(directory)) {}
  Result(Record found, std::string id, const Pack& pack, std::uint64_t begin)
      : record(std::move(found)), id_(std::move(id)), pack_(&pack), begin_(begin) {}

  bool isPacked() const { return pack_ != nullptr; }
  // Whether params.txt is the one that the record speaks of, and the marker is there; an entry of a pack needs none.
  bool hasItsParams() const;
  // The whole of params.txt if it is the one that the record speaks of.
  std::optional<std::string> params() const;
  std::optional<std::string> log() const;

 private:
  std::string id_;
  std::string directory_;
  const Pack* pack_ = nullptr;
  std::uint64_t begin_ = 0;
};

class Results {
 public:
  using Accept = std::function<bool(const Result&)>;

  // Reads the heads of all packs.
  explicit Results(const BatchDirectory& directory);
  // For the runner of a slice: reads the pack of the slice first, and others when a result is not there. `directory`
  // must live as long.
  Results(const BatchDirectory& directory, const Slice& slice);

  // A result of the input that is accepted: of the pack of the slice, of its directory, of any pack.
  std::optional<Result> find(const BatchInput& input, const Accept& accept);
  // The newest that is accepted.
  std::optional<Result> newest(const BatchInput& input, const Accept& accept) const;

  // Learns of what runners of other slicings have packed since, which may be of the same inputs.
  void refresh();

 private:
  void refreshAll(bool withKnown);

  const BatchDirectory& directory_;
  Slice slice_;
  bool hasOthers_ = true;
  std::map<std::string, Pack> packs_;  // by name
};

}  // namespace batch
