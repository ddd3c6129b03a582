// Words, lines and stretches of numbers of a legacy file, from first to last.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "importers/vtk/input_file.h"

namespace importers::vtk {

class TextCursor {
 public:
  // `file` must live as long.
  explicit TextCursor(const InputFile& file);

  // The next word between blanks and line ends; empty at the end of the file. Throws ImportError for one of more than
  // 4 KiB.
  std::string word();
  // The rest of the line, without its end; the same limit.
  std::string restOfLine();
  // Passes over so many words; CutOff where the file has fewer.
  void skipWords(std::uint64_t count);
  // Passes over bytes that are no text; CutOff where the file has fewer.
  void skipBytes(std::uint64_t count);

  bool isAtEnd() { return at_ == filled_ && !refill(); }
  // The byte of the file that comes next.
  std::uint64_t offset() const { return readTo_ - (filled_ - at_); }
  // The line that the cursor is in, from 1; 0 once bytes that are not text have been skipped.
  std::int64_t line() const { return hasBytes_ ? 0 : line_; }
  SourcePlace place() const;

  [[noreturn]] void fail(const std::string& reason) const;
  [[noreturn]] void failCut(const std::string& what) const;

 private:
  bool refill();

  const InputFile& file_;
  std::vector<char> text_;
  std::size_t at_ = 0;
  std::size_t filled_ = 0;
  std::uint64_t readTo_ = 0;
  std::int64_t line_ = 1;
  bool hasBytes_ = false;
};

}  // namespace importers::vtk
