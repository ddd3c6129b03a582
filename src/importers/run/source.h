// The files of one run, as an importer reads them.
#pragma once

#include <cstdint>
#include <functional>

#include "importers/run/choice.h"
#include "importers/run/outline.h"

namespace importers {

class Sink;

// Receives how many bytes of the result files have been read, and their size.
using ProgressSink = std::function<void(std::uint64_t done, std::uint64_t all)>;

class Source {
 public:
  Source() = default;
  virtual ~Source() = default;
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  // What the files hold, found while reading as few rows as possible. Called once, first. Throws ImportError for files
  // that cannot be read.
  virtual Outline outline() = 0;

  // Delivers the mesh and the sets, then the chosen rows in any order of frames, then the histories; one block of rows
  // in memory at a time. The sink copies what it keeps. A second call does the same without repeating warnings. Throws
  // ImportError for rows that cannot be read.
  virtual void deliver(const Choice& choice, Sink& sink, const ProgressSink& progress) = 0;

  // Call after deliver() has failed: reads all rows, drops those that cannot be read, each with a warning, and returns
  // the outline of the rest. False if nothing can be dropped; the error then ends the import.
  virtual bool leaveOutDamage(Outline& /*outline*/) { return false; }
};

}  // namespace importers
