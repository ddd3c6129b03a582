#include "result/record_line.h"

#include "result/number_format.h"

RecordLine& RecordLine::operator<<(std::string_view text) {
  text_ += text;
  return *this;
}

RecordLine& RecordLine::operator<<(double number) {
  appendNumber(text_, number);
  return *this;
}

RecordLine& RecordLine::operator<<(int number) {
  text_ += std::to_string(number);
  return *this;
}

void RecordLine::end(std::ostream& out) {
  text_ += '\n';
  out.write(text_.data(), static_cast<std::streamsize>(text_.size()));
  out.flush();
  text_.resize(start_);
}
