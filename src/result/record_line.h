// A line of a result file.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

// Puts a line together from texts and numbers, then writes it at once: a reader of the growing file sees whole lines.
class RecordLine {
 public:
  RecordLine() { text_.reserve(kUsual); }

  RecordLine& operator<<(std::string_view text);
  // In the format of the result file, see appendNumber().
  RecordLine& operator<<(double number);
  RecordLine& operator<<(int number);

  // Ends the line, writes it and flushes; the next one starts empty.
  void end(std::ostream& out);

 private:
  static constexpr std::size_t kUsual = 160;

  std::string text_;
};
