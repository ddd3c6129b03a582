// Which records the names of a params.txt are.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "inspect/records.h"

namespace inspect {

// Takes the names of a file in their order. Where a name stands in it as often as there are records of the name, the
// first is the first of them, and so on; else nobody can tell which are meant, and each gets all.
class NameParts {
 public:
  // Without `switches` any configuration may have given the names, one that computes no values too.
  NameParts(std::shared_ptr<const odbstore::Reader> database, const std::optional<ExtractionSwitches>& switches);

  // First all names, as often as they occur ...
  void announce(std::string_view name);
  // ... then each once more, in the same order: the records that it can be. Empty for a name that is none of the
  // database's. Good until the next call.
  const std::vector<Record>& next(std::string_view name);

  // Of the names that have been asked for, each time.
  std::size_t unknown() const { return unknown_; }
  std::size_t ambiguous() const { return ambiguous_; }

 private:
  struct Name {
    std::size_t times = 0;
    std::size_t met = 0;
  };

  std::vector<std::unique_ptr<RecordList>> lists_;
  std::unordered_map<std::string, Name> names_;
  std::vector<Record> found_;
  std::size_t unknown_ = 0;
  std::size_t ambiguous_ = 0;
};

}  // namespace inspect
