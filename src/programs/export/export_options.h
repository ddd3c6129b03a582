// The command line of `kolvex export`.
#pragma once

#include <string>

#include "export/vtu_series.h"
#include "tool/command.h"

namespace vtk_export {

struct ExportOptions {
  std::string database;
  std::string format;
  ExportRequest request;
};

// Fills `options` when it parses; they must live as long.
tool::Command exportCommand(ExportOptions& options);

}  // namespace vtk_export
