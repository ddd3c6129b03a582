// One format of results, as `kolvex import` meets it: how its files are known, its own options, and how a run is
// opened.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "importers/input/diagnostics.h"
#include "importers/run/field_shapes.h"
#include "importers/run/source.h"
#include "tool/command.h"

namespace importers {

// What all formats are asked for.
struct OpenRequest {
  std::string results;    // the file that resultFile() gave
  bool isStrict = false;  // whether truncated files and unknown contents are errors
  bool withMass = true;   // whether steps have the mass of the model, where the format knows it
  bool withSets = true;
  // For formats that name components: which ones become vectors and tensors.
  ShapeChoice shapes = {};
};

class Importer {
 public:
  Importer() = default;
  virtual ~Importer() = default;
  Importer(const Importer&) = delete;
  Importer& operator=(const Importer&) = delete;

  // The file with the results of what a user names: a run may have several files, or be named without an ending.
  virtual std::string resultFile(const std::string& named) const = 0;
  // The database beside a result file: its path with another ending, unless that would be the same for several runs.
  virtual std::string databaseName(const std::string& results) const;
  // Whether a file of this format begins like this; `start` are its first bytes, at most kStartBytes.
  virtual bool recognises(std::string_view start, const std::string& path) const = 0;
  // How such files begin, for error messages: "    1C" on line 1.
  virtual std::string beginning() const = 0;
  // Adds the options that only this format has.
  virtual void addOptions(tool::Command& command) = 0;
  // The files that importing reads, which the database must not replace.
  virtual std::vector<std::string> inputs(const OpenRequest& request) const = 0;
  // Throws ImportError for files that cannot be read. `warn` must live as long as the source.
  virtual std::unique_ptr<Source> open(const OpenRequest& request, const WarningSink& warn) = 0;

  static constexpr std::size_t kStartBytes = 512;
};

}  // namespace importers
