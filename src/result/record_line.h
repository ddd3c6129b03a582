// A line of a result file.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

// Puts a line together from texts and numbers, then writes it at once: a reader of the growing file sees whole lines.
class RecordLine {
 public:
  // Every line begins with `start`.
  explicit RecordLine(std::string start = {}) : start_(start.size()), text_(std::move(start)) {}

  RecordLine& operator<<(std::string_view text);
  // In the format of the result file, see appendNumber().
  RecordLine& operator<<(double number);
  RecordLine& operator<<(int number);

  // Ends the line, writes it and flushes; the next one begins.
  void end(std::ostream& out);

 private:
  std::size_t start_;
  std::string text_;
};
