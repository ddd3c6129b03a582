// How much records may differ.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace inspect {

// Two numbers agree where they differ by no more than `absolute`, or by no more than `relative` times the larger of
// their magnitudes.
struct Tolerance {
  double absolute = 0.0;
  double relative = 0.0;
  bool isIgnored = false;  // records with it are not compared
};

// A tolerance for each pattern of names, and one for all others.
class Tolerances {
 public:
  explicit Tolerances(Tolerance others) : others_(others) {}

  // Adds those of a file, which is called `file` in errors. A line is a pattern with * and ?, blanks, and one or more
  // of "abs=NUMBER", "rel=NUMBER" and "ignore"; "#" starts a comment. What a line does not give is 0. Of several
  // patterns that fit, the first counts. Throws base::FileError, which names the line.
  void add(const std::string& text, const std::string& file);

  const Tolerance& of(const std::string& name) const;

 private:
  std::vector<std::pair<std::string, Tolerance>> patterns_;
  Tolerance others_;
};

}  // namespace inspect
