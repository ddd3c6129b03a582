// Which records a table has, and their columns.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace batch {

// Counts the names within one row, since a name may stand there twice: the second "U" is "U#2".
class RecordColumns {
 public:
  // `patterns` as a shell has them; a record is wanted that matches one, without patterns every one is.
  explicit RecordColumns(std::vector<std::string> patterns) : patterns_(std::move(patterns)) {}

  void beginRow() { ++row_; }
  // The column of the next record of that name in the row, created if there is none yet; nothing if it is not wanted.
  std::optional<std::size_t> columnOf(std::string_view name);
  // The same without making one: nothing as well where it has none.
  std::optional<std::size_t> knownColumnOf(std::string_view name);
  bool isWanted(std::string_view name) { return entryOf(name).isWanted; }

  // The names of the columns, in the order in which they were created.
  const std::vector<std::string>& names() const { return names_; }

 private:
  struct Entry {
    bool isWanted = false;
    std::uint64_t row = 0;             // that it was met in last
    std::size_t times = 0;             // in that row
    std::vector<std::size_t> columns;  // of the first, the second, ...
  };
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };

  Entry& entryOf(std::string_view name);
  std::size_t timesBefore(Entry& entry) const;

  std::vector<std::string> patterns_;
  std::unordered_map<std::string, Entry, Hash, std::equal_to<>> entries_;
  std::vector<std::string> names_;
  std::uint64_t row_ = 0;
};

}  // namespace batch
