// A database as a series of files for viewers: one .vtu for each frame, and a .pvd that lists them with their times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/diagnostic.h"
#include "export/frame_choice.h"
#include "odbstore/reader.h"

namespace vtk_export {

struct ExportRequest {
  std::string output;              // path of the .pvd; the frames are in a directory beside it
  std::vector<std::string> steps;  // as chooseFrames() takes them
  FrameRange frames;
  std::vector<std::string> fields;  // names with * and ?; none choose all
  bool withSets = true;
  std::vector<std::string> sets;  // likewise
  bool isDeformed = false;        // moves the points by the vector field of this name
  std::string displacement = "U";
  double scale = 1.0;
  bool withEachPoint = false;  // FieldArrays
  bool isPacked = false;
};

struct ExportSummary {
  std::size_t frames = 0;
  std::size_t fields = 0;
  std::size_t sets = 0;
  std::size_t points = 0;
  std::size_t cells = 0;
  std::uint64_t bytes = 0;  // of all files
};

// The directory of the frames: "job.vtu" beside "job.pvd".
std::string framesDirectory(const std::string& output);

// Hears how many frames of all are written.
using FrameProgress = std::function<void(std::size_t done, std::size_t all)>;

// Writes the series. An older .pvd goes before the first frame is written and the new one comes last, so that what a
// .pvd names belongs together. Frames of an older series that this one does not have are removed. Throws
// base::FileError, also where the database has no mesh, or nothing of what is chosen.
ExportSummary exportVtu(const odbstore::Reader& reader, const ExportRequest& request, const base::DiagnosticSink& warn,
                        const FrameProgress& progress);

}  // namespace vtk_export
