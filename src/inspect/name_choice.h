// Names that a user chooses by patterns.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace inspect {

// Patterns as a shell has them: *, ?, [...]. Without any, everything is chosen.
class NameChoice {
 public:
  NameChoice() = default;
  explicit NameChoice(std::vector<std::string> patterns) : patterns_(std::move(patterns)) {}

  bool isEmpty() const { return patterns_.empty(); }
  bool takes(std::string_view name) const;
  const std::vector<std::string>& patterns() const { return patterns_; }

 private:
  std::vector<std::string> patterns_;
};

}  // namespace inspect
