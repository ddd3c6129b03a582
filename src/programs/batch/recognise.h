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
  InputFormats();

  // A file that begins as HDF5 does, or is named .odb, is taken for a database; everything else is for the importers,
  // who explain what they do not know.
  Recognised recognise(const std::string& path) const;

 private:
  std::vector<importers::KnownFormat> formats_;
};

}  // namespace batch
