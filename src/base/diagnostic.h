// What there is to say of a file, in its parts, and the one place that puts it into words.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace base {

// Where something is said of. What is not known, or does not matter, is left out.
struct Place {
  std::string file;                        // as its user named it
  std::int64_t line = 0;                   // from 1; 0 for none
  std::optional<std::uint64_t> byte = {};  // that what is meant ends before, where lines do not tell
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

// Receives what users should know although the work goes on.
using DiagnosticSink = std::function<void(const Diagnostic&)>;

// What files hold and are called may show up here: control characters are escaped (base/control_characters.h).
//
// "job.frd:12", "job.odb: /steps/Step-1", or nothing.
std::string textOf(const Place& place);
// "job.frd:12: the node 3 is there twice (before byte 400)": the place, as far as it is known, and the reason.
std::string textOf(const Place& place, const std::string& reason);
// "job.frd:12: warning: the file is cut off".
std::string textOf(const Diagnostic& diagnostic);

}  // namespace base
