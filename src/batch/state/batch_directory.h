// The directory that a batch writes into.
//
//     DIR/<id>/             of each input: status, log, params.txt, paramsdone.txt
//     DIR/packs/            instead, the results of many inputs in one file for each slice
//     DIR/.kolvex-batch/    of the batch: inputs, settings, lock, the configuration as it is used
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/descriptor.h"

namespace batch {

inline constexpr const char* kStatusName = "status";
inline constexpr const char* kLogName = "log";
inline constexpr const char* kParamsName = "params.txt";
inline constexpr const char* kMarkerName = "paramsdone.txt";

struct BatchInput {
  std::string path;  // absolute
  std::string id;
};

// The inputs that one run does: those whose number, from 0, leaves the remainder `index` when divided by `size`.
struct Slice {
  std::size_t index = 0;
  std::size_t size = 1;
};

// The file in DIR/packs with the results of a slice: "3-of-50".
std::string packName(const Slice& slice);
bool isPackName(const std::string& name);

// What decides about the records besides the inputs.
struct Settings {
  std::string configuration;               // the text of the configuration file
  std::vector<std::string> importOptions;  // in their order

  // As it stands in records.
  std::string sum() const;
};

class BatchDirectory {
 public:
  explicit BatchDirectory(std::string path);

  // Of an input.
  std::string directoryOf(const BatchInput& input) const { return path_ + "/" + input.id; }
  std::string packsPath() const { return path_ + "/packs"; }
  // Of the batch itself.
  std::string ownPath(const std::string& name) const { return own_ + "/" + name; }
  const std::string& path() const { return path_; }
  // The copy of the configuration that the programs get, so that changing the file under way changes nothing.
  std::string configurationPath(const Settings& settings) const;

  // Whether a batch has been started there.
  bool isBatch() const;

  // Makes the directory and takes part in the batch for as long as the returned lock is open. Throws base::FileError,
  // also where somebody else is at work there with other settings, whose records would not fit.
  base::Descriptor join(const Settings& settings) const;

  // Adds inputs to those of earlier runs, each once, new ones at the end. Throws base::FileError.
  void addInputs(const std::vector<BatchInput>& inputs) const;

  // All that have ever been added, in their order. Throws base::FileError where the list cannot be read.
  std::vector<BatchInput> inputs() const;

  // The sum of the settings that were used last; empty if there are none.
  std::string lastSettings() const;

 private:
  std::string path_;
  std::string own_;
};

}  // namespace batch
