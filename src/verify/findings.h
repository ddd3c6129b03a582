// Gathers what is wrong with a file.
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

  // A finding about an object of the file, or the file as a whole. One fault may be met on several ways.
  void add(const std::string& object, const std::string& reason);

  // What there is to say of a file without damage.
  void concludeWith(State state, const std::string& reason) {
    if (verdict_.state == State::damaged) return;
    verdict_.state = state;
    verdict_.findings.push_back(base::note(placeOf(""), reason));
  }

  // Runs `action`, which throws for what is wrong. Whether it came to its end.
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

  // Says that there are more than have been kept, where there are.
  void close();

 private:
  base::Place placeOf(const std::string& object) const { return {verdict_.path, 0, {}, object}; }

  Verdict& verdict_;
  std::unordered_set<std::string> known_;  // in words
  std::size_t more_ = 0;
};

}  // namespace verify
