// What an input is.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "batch/run/run_plan.h"
#include "importers/formats/formats.h"

namespace batch {

// Knows the formats of results.
class InputFormats {
 public:
  explicit InputFormats(const std::vector<importers::Format>& table);

  // A file named .odb is taken for a database, and so is one that begins as HDF5 does and that no importer knows.
  // Everything else is for the importers, which explain what they do not know.
  Recognised recognise(const std::string& path) const;

 private:
  bool isOfAFormat(const std::string& start, const std::string& path) const;

  std::vector<importers::KnownFormat> formats_;
};

}  // namespace batch
