#include "batch/packs/pack.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <span>
#include <vector>

namespace batch {

namespace {

// Reads heads that lie near each other with one call.
class HeadReader {
 public:
  explicit HeadReader(int file) : file_(file) {}

  // What stands at `at`: at least a whole head unless the file ends before.
  std::string_view at(std::uint64_t at) {
    if (at < begin_ || at + kLongestHead > begin_ + length_) {
      const auto got = base::readAt(file_, static_cast<std::int64_t>(at), std::as_writable_bytes(std::span(window_)));
      begin_ = at;
      length_ = got.value_or(0);
    }
    return std::string_view(window_.data(), length_).substr(at - begin_);
  }

 private:
  int file_;
  std::vector<char> window_ = std::vector<char>(std::size_t{1} << 16U);
  std::uint64_t begin_ = 0;
  std::uint64_t length_ = 0;
};

std::uint64_t sizeOf(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

std::uint64_t forEachEntry(int file, std::uint64_t begin,
                           const std::function<void(const PackHead&, std::uint64_t)>& take) {
  const std::uint64_t size = sizeOf(file);
  if (begin >= size) return begin;
  HeadReader reader(file);
  while (begin < size) {
    const std::optional<PackHead> head = headFrom(reader.at(begin));
    if (!head || head->entryLength() > size - begin) return begin;
    take(*head, begin);
    begin += head->entryLength();
  }
  return begin;
}

Pack::Pack(const std::string& path) : file_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}

void Pack::refresh() {
  end_ =
      forEachEntry(file_.get(), end_, [this](const PackHead& head, std::uint64_t begin) { entries_[head.id] = begin; });
}

std::optional<std::uint64_t> Pack::find(const std::string& id) const {
  const auto entry = entries_.find(id);
  return entry == entries_.end() ? std::nullopt : std::optional(entry->second);
}

std::optional<std::string> Pack::text(const std::string& id, std::uint64_t begin, PackPart part) const {
  std::array<char, kLongestHead> start{};
  const auto got =
      base::readAt(file_.get(), static_cast<std::int64_t>(begin), std::as_writable_bytes(std::span(start)));
  const std::optional<PackHead> head = headFrom(std::string_view(start.data(), got.value_or(0)));
  if (!head || head->id != id || begin + head->entryLength() > sizeOf(file_.get())) return std::nullopt;
  std::string text(head->parts[part].length, '\0');
  const auto read = base::readAt(file_.get(), static_cast<std::int64_t>(begin + head->beginOf(part)),
                                 std::as_writable_bytes(std::span(text)));
  return read == text.size() && sumOfText(text) == head->parts[part] ? std::optional(std::move(text)) : std::nullopt;
}

}  // namespace batch
