#include "report/page_records.h"

#include <fstream>

#include "base/file_error.h"

namespace report {

namespace {

// Of a value on the page: longer ones are histories, which have curves.
constexpr std::size_t kMostOfValue = 120;

std::ifstream openText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in || in.peek() == std::ifstream::traits_type::eof()) {
    if (!in.is_open() || in.bad()) throw base::NoFileError(path, "cannot be read");
  }
  return in;
}

std::string shortened(const std::string& line, std::size_t tab) {
  if (line.size() <= tab + kMostOfValue) return line;
  return line.substr(0, tab + kMostOfValue) + "...";
}

}  // namespace

RecordsPart recordsPart(const std::string& params, const odbstore::Reader&, const inspect::ModelMesh&, const Surface&,
                        std::size_t most, PageData& data) {
  std::ifstream in = openText(params);
  RecordsPart part;
  std::string lines;
  std::int64_t number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos)
      throw base::FileError(params, "line " + std::to_string(number), "no tab between a name and a value");
    const std::string text = shortened(line, tab);
    if (lines.size() + text.size() > most * 4) {
      ++part.leftOut;
      continue;
    }
    lines += text;
    lines += '\n';
    ++part.shown;
  }
  part.json = {{"lines", data.add(pack(lines))}};
  return part;
}

std::vector<std::string> messageLines(const std::string& path) {
  std::ifstream in = openText(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line) && lines.size() < 1000;)
    if (!line.empty()) lines.push_back(line);
  return lines;
}

}  // namespace report
