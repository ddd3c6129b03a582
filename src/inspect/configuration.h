// A configuration file, for those who look at it before a run does.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "result/extraction_switches.h"

namespace inspect {

struct Configuration {
  std::string path;
  std::vector<std::string> lines;    // without their ends
  std::optional<std::size_t> start;  // the line from which on keywords count; none where there is none
  ExtractionSwitches switches;       // as a run sets them

  // A line that a run does not accept: it ends there, and writes nothing.
  struct Refusal {
    std::size_t line;
    std::string reason;
  };
  std::optional<Refusal> refusal;
};

// Throws base::NoFileError where there is no regular file of the name, base::FileError where it cannot be read.
Configuration readConfigurationFile(const std::string& path);

// The switches of a configuration that a run accepts; throws base::FileError for one that it does not.
ExtractionSwitches switchesOf(const Configuration& configuration);

}  // namespace inspect
