// Collects the faults of a file.
#pragma once

#include <exception>
#include <new>
#include <string>
#include <unordered_set>

#include "base/diagnostic.h"
#include "base/file_error.h"
#include "verify/verify_file.h"

namespace verify {

class Findings {
 public:
  explicit Findings(Verdict& verdict) : verdict_(verdict) {}

  // A finding about an object of the file or the whole file. A fault that is found more than once is kept once.
  void add(const std::string& object, const std::string& reason);

  // The verdict on a file without damage.
  void concludeWith(State state, const std::string& reason) {
    if (verdict_.state == State::damaged) return;
    verdict_.state = state;
    verdict_.findings.push_back(base::note(placeOf(""), reason));
  }

  // Runs `action`, which throws if it finds a fault; returns whether it did not.
  template <class Action>
  bool guarded(Action&& action) {
    try {
      action();
      return true;
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const base::FileError& error) {
      add(error.object(), error.reason());
    } catch (const std::exception& error) {
      add("", error.what());
    }
    return false;
  }

  bool isEmpty() const { return verdict_.state != State::damaged; }

  // Adds a note if there are more findings than are kept.
  void close();

 private:
  base::Place placeOf(const std::string& object) const { return {verdict_.path, 0, {}, object}; }

  Verdict& verdict_;
  std::unordered_set<std::string> known_;  // in words
  std::size_t more_ = 0;
};

}  // namespace verify
