#include "importers/vtk/text_cursor.h"

#include <algorithm>
#include <array>

namespace importers::vtk {

namespace {

constexpr std::size_t kLongestWord = 4096;

// Of each character whether it stands between words.
constexpr std::array<unsigned char, 256> kBlanks = [] {
  std::array<unsigned char, 256> blanks{};
  for (const char c : std::string_view(" \t\r\n")) blanks[static_cast<unsigned char>(c)] = 1;
  return blanks;
}();

unsigned isBlank(char c) { return kBlanks[static_cast<unsigned char>(c)]; }

}  // namespace

TextCursor::TextCursor(const InputFile& file)
    : file_(file), text_(static_cast<std::size_t>(std::min<std::uint64_t>(kBufferBytes, file.size()))) {}

SourcePlace TextCursor::place() const {
  SourcePlace place{file_.path(), line()};
  if (hasBytes_) place.byte = offset();
  return place;
}

void TextCursor::fail(const std::string& reason) const { throw ImportError(place(), reason); }

void TextCursor::failCut(const std::string& what) const { throw CutOff(place(), "the file ends inside " + what); }

bool TextCursor::refill() {
  at_ = 0;
  filled_ = file_.read(readTo_, std::as_writable_bytes(std::span(text_)));
  readTo_ += filled_;
  return filled_ > 0;
}

std::string TextCursor::word() {
  for (; !isAtEnd() && isBlank(text_[at_]) != 0; ++at_) line_ += text_[at_] == '\n' ? 1 : 0;
  std::string word;
  for (; !isAtEnd() && isBlank(text_[at_]) == 0; ++at_) {
    if (word.size() == kLongestWord) fail("a word is too long");
    word += text_[at_];
  }
  return word;
}

std::string TextCursor::restOfLine() {
  std::string line;
  for (; !isAtEnd() && text_[at_] != '\n'; ++at_) {
    if (line.size() == kLongestWord) fail("a line is too long");
    line += text_[at_];
  }
  if (!isAtEnd()) {
    ++at_;
    ++line_;
  }
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

void TextCursor::skipWords(std::uint64_t count) {
  unsigned before = 1;  // whether the character before is none of a word
  while (count > 0) {
    if (isAtEnd()) {
      if (count == 1 && before == 0) return;
      failCut("an array");
    }
    std::size_t at = at_;
    // A word ends with the blank after it.
    for (; at < filled_ && count > 0; ++at) {
      const unsigned blank = isBlank(text_[at]);
      count -= blank & (before ^ 1U);
      line_ += text_[at] == '\n' ? 1 : 0;
      before = blank;
    }
    at_ = at;
  }
}

void TextCursor::skipBytes(std::uint64_t count) {
  hasBytes_ = true;
  if (count > file_.size() - std::min(file_.size(), offset())) failCut("an array");
  const std::size_t buffered = std::min<std::uint64_t>(count, filled_ - at_);
  at_ += buffered;
  if (buffered == count) return;
  readTo_ += count - buffered;
  at_ = filled_ = 0;
}

}  // namespace importers::vtk
