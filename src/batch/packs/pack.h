// A pack as its readers see it: a file of entries, the last one of an id counting.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

#include "base/descriptor.h"
#include "batch/packs/pack_entry.h"

namespace batch {

// Calls take(head, where the entry begins) for each whole entry from `begin` on, and returns where the last one ends:
// there is the end of the file, or an entry that is still being written, cut off or damaged. Texts are not read.
std::uint64_t forEachEntry(int file, std::uint64_t begin,
                           const std::function<void(const PackHead&, std::uint64_t)>& take);

class Pack {
 public:
  // A file that cannot be opened is taken for an empty pack.
  explicit Pack(const std::string& path);

  // Learns of what has been appended since the last time; the first time of all.
  void refresh();

  // Where the last entry of an input begins.
  std::optional<std::uint64_t> find(const std::string& id) const;

  // A text of the entry at `begin`, if that is an entry of this id and the text has its sum.
  std::optional<std::string> text(const std::string& id, std::uint64_t begin, PackPart part) const;

 private:
  base::Descriptor file_;
  std::uint64_t end_ = 0;                                   // of what is known
  std::unordered_map<std::string, std::uint64_t> entries_;  // by id
};

}  // namespace batch
