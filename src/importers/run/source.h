// The files of one run, as an importer reads them.
#pragma once

#include <cstdint>
#include <functional>

#include "importers/run/choice.h"
#include "importers/run/outline.h"

namespace importers {

class Sink;

// Told how many bytes of the files with results have been read, and how many they have.
using ProgressSink = std::function<void(std::uint64_t done, std::uint64_t all)>;

class Source {
 public:
  Source() = default;
  virtual ~Source() = default;
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  // What the files hold, found without reading more rows than it takes. Called once, first. An ImportError for files
  // that cannot be read.
  virtual Outline outline() = 0;

  // Hands over the mesh and the sets, then the chosen rows in any order of frames, then the histories; one block of
  // rows in memory at a time. The sink copies what it keeps. May be called again, and then does the same, without
  // repeating its warnings. An ImportError for rows that cannot be read.
  virtual void deliver(const Choice& choice, Sink& sink, const ProgressSink& progress) = 0;

  // After deliver() has failed: reads all rows, leaves those out from now on that cannot be read, each with a warning,
  // and gives the outline of what is left. False if nothing can be left out, so that the error stands.
  virtual bool leaveOutDamage(Outline& /*outline*/) { return false; }
};

}  // namespace importers
