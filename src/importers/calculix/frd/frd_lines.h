// Reads lines and bytes that a CalculiX result file must still have.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "importers/input/line_reader.h"

namespace importers::calculix {

// What all readers of blocks share. At an unexpected end of file they throw CutOff, for a damaged file ImportError with
// the line, and with the byte where there is anything but text before it.
class FrdLines {
 public:
  struct CutOff {};

  explicit FrdLines(const std::string& path) : reader_(path) {}

  LineReader& reader() { return reader_; }
  const LineReader& reader() const { return reader_; }
  std::int64_t lineNumber() const { return reader_.lineNumber(); }
  const std::string& path() const { return reader_.path(); }
  [[noreturn]] void fail(const std::string& reason) const { reader_.fail(reason); }

  // The next line, valid until the next call.
  std::string_view require();
  // The next line, which must start with `key`; `what` describes it in messages.
  std::string_view requireKey(std::string_view key, const char* what);
  // The next `size` bytes.
  void requireBytes(void* to, std::size_t size);
  // Throws CutOff unless `count` records of `size` bytes follow.
  void requireRecords(std::size_t count, std::size_t size) const;

  // Whether the last line of a block of text has been read since the block was started.
  void startBlock() { isAtEndOfBlock_ = false; }
  void endBlock() { isAtEndOfBlock_ = true; }
  bool isAtEndOfBlock() const { return isAtEndOfBlock_; }

  // The whole number in columns of a line, counted from 1.
  int integerAt(std::string_view line, std::size_t column, std::size_t width, const char* what) const;
  // The number of rows that a block header announces; flow networks leave it blank.
  std::optional<std::size_t> countAt(std::string_view header) const;
  // Fails at `line` unless as many were found as announced.
  void requireCount(std::optional<std::size_t> announced, std::size_t found, std::int64_t line, const char* what) const;

 private:
  LineReader reader_;
  bool isAtEndOfBlock_ = false;
};

// Ends the rows of a block of text.
inline constexpr std::string_view kEndOfRows = " -3";

// Counts in headers are trusted no further than this before the rows themselves have been seen.
inline constexpr std::size_t kLargestReserve = 1U << 20;

// This many characters identify what follows a binary block.
inline constexpr std::size_t kKeyLength = 6;

// Whether a text record that begins a block, a frame or the end of the file starts here.
bool isBlockStart(std::string_view text);

}  // namespace importers::calculix
