// Reads a file line by line through one large buffer, and bytes where there is no text.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "importers/input/diagnostics.h"

namespace importers {

class LineReader {
 public:
  // Throws ImportError if the file cannot be opened or is not a regular file.
  explicit LineReader(const std::string& path);
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  // The next line without its end ("\n" or "\r\n"), valid until the next call; false at the end of the file. A last
  // line without an end counts. Throws ImportError for a read error and for a line of more than kLongestLine bytes.
  bool next(std::string_view& line);

  // What has been read ahead, at least `least` bytes of it (no more than kLongestLine), fewer at the end of the file;
  // valid until the next call of any member but skipBytes().
  std::string_view ahead(std::size_t least);
  // Copies the next `size` bytes; false, with nothing read, if the file has fewer left.
  bool readBytes(void* to, std::size_t size);
  // Up to `size` bytes from `distance` bytes ahead on, fewer at the end of the file; valid until the next call of any
  // member. `size` is at most kLongestLine.
  std::string_view peekAt(std::uint64_t distance, std::size_t size);
  // Skips bytes, not more than are left, that are known to contain so many lines.
  void skipBytes(std::uint64_t size, std::int64_t lines);

  // How many bytes have been read, how many there were when the file was opened, and how many of them are left.
  std::uint64_t offset() const { return readTo_ - (end_ - at_); }
  std::uint64_t size() const { return size_; }
  std::uint64_t bytesLeft() const { return size_ > offset() ? size_ - offset() : 0; }

  // The number of the line returned last, from 1. Bytes read otherwise do not count as lines.
  std::int64_t lineNumber() const { return lineNumber_; }
  // Whether that line had a line end: only the last line of a truncated file can lack it.
  bool isTerminated() const { return terminated_; }
  const std::string& path() const { return path_; }
  // That line of that file.
  SourcePlace place() const { return {path_, lineNumber_}; }

  // Throws ImportError at the line returned last; the reason names the byte too once bytes have been read that are no
  // lines.
  [[noreturn]] void fail(const std::string& reason) const;

  // Far beyond the lines of any text that an importer reads.
  static constexpr std::size_t kLongestLine = std::size_t{1} << 20;

 private:
  bool refill();
  std::size_t readSome(char* to, std::size_t size);

  std::string path_;
  int file_ = -1;
  std::unique_ptr<char[]> buffer_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  std::uint64_t readTo_ = 0;  // where in the file the buffer ends
  std::uint64_t size_ = 0;
  bool hasBytes_ = false;
  std::vector<char> beyond_;  // what peekAt() shows that the buffer does not have
  std::int64_t lineNumber_ = 0;
  bool terminated_ = true;
};

}  // namespace importers
