// Reads a text file line by line through one large buffer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace importers {

class LineReader {
 public:
  // Throws ImportError when the file cannot be opened or is no regular file.
  explicit LineReader(const std::string& path);
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  // The next line without its end ("\n" or "\r\n"), good until the next call; false at the end of the file. A last line
  // without an end counts. Throws ImportError for a read error and for a line of more than kLongestLine bytes.
  bool next(std::string_view& line);

  // The number of the line handed out last, from 1.
  std::int64_t lineNumber() const { return lineNumber_; }
  // Whether that line had an end: only the last one of a file can lack it, where the file is cut off.
  bool isTerminated() const { return terminated_; }
  const std::string& path() const { return path_; }

  // Throws ImportError at the line handed out last.
  [[noreturn]] void fail(const std::string& reason) const;

  // No text that an importer reads has lines anywhere near this.
  static constexpr std::size_t kLongestLine = std::size_t{1} << 20;

 private:
  bool refill();

  std::string path_;
  int file_ = -1;
  std::vector<char> buffer_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  std::int64_t lineNumber_ = 0;
  bool terminated_ = true;
};

}  // namespace importers
