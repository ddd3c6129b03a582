// Messages about a file, in parts, and the one place that puts them into words.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace base {

// The place that a message is about. Parts that are unknown or do not matter are left out.
struct Place {
  std::string file;                        // as its user named it
  std::int64_t line = 0;                   // from 1; 0 = none
  std::optional<std::uint64_t> byte = {};  // the faulty item ends before this byte; for files without lines
  std::string object = {};                 // the path of an object in the file

  bool isKnown() const { return !file.empty(); }
  friend bool operator==(const Place&, const Place&) = default;
};

enum class Severity { note, warning, error };

struct Diagnostic {
  Severity severity = Severity::warning;
  Place place;
  std::string reason;  // without a full stop
};

inline Diagnostic note(Place place, std::string reason) {
  return {Severity::note, std::move(place), std::move(reason)};
}
inline Diagnostic warning(Place place, std::string reason) {
  return {Severity::warning, std::move(place), std::move(reason)};
}

// Receives warnings and notes, after which the work goes on.
using DiagnosticSink = std::function<void(const Diagnostic&)>;

// Contents and names of files may appear in messages: control characters are escaped (base/control_characters.h).
//
// "job.frd:12", "job.odb: /steps/Step-1", or nothing.
std::string textOf(const Place& place);
// "job.frd:12: the node 3 is there twice (before byte 400)": the place, as far as it is known, and the reason.
std::string textOf(const Place& place, const std::string& reason);
// "job.frd:12: warning: the file is truncated".
std::string textOf(const Diagnostic& diagnostic);

}  // namespace base
