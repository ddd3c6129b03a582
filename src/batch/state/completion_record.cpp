#include "batch/state/completion_record.h"

#include <fmt/format.h>
#include <unistd.h>

#include <charconv>
#include <functional>
#include <map>
#include <string_view>

#include "batch/state/batch_directory.h"
#include "batch/state/small_files.h"

namespace batch {

namespace {

std::string escaped(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '\\') {
      out += "\\\\";
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\t') {
      out += "\\t";
    } else {
      out += c;
    }
  }
  return out;
}

std::optional<std::string> unescaped(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      out += text[i];
      continue;
    }
    if (++i == text.size()) return std::nullopt;
    if (text[i] != '\\' && text[i] != 'n' && text[i] != 't') return std::nullopt;
    out += text[i] == 'n' ? '\n' : text[i] == 't' ? '\t' : '\\';
  }
  return out;
}

// Takes the text up to the next separator off the front.
std::string_view takeUntil(std::string_view& text, char separator) {
  const std::size_t end = text.find(separator);
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return taken;
}

template <class Number>
bool readNumber(std::string_view text, Number& to, int base = 10) {
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), to, base);
  return failure == std::errc() && end == text.data() + text.size();
}

bool readNumber(std::string_view text, double& to) {
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), to);
  return failure == std::errc() && end == text.data() + text.size();
}

bool readText(std::string_view text, std::string& to) {
  const std::optional<std::string> value = unescaped(text);
  if (value) to = *value;
  return value.has_value();
}

// "SIZE MODIFIED INODE PATH", the first three "-" where there is no file.
bool readStamp(std::string_view text, std::vector<FileStamp>& to) {
  FileStamp stamp;
  const std::string_view size = takeUntil(text, ' ');
  const std::string_view modified = takeUntil(text, ' ');
  const std::string_view inode = takeUntil(text, ' ');
  stamp.isThere = size != "-";
  if (stamp.isThere &&
      !(readNumber(size, stamp.size) && readNumber(modified, stamp.modified) && readNumber(inode, stamp.inode))) {
    return false;
  }
  if (!readText(text, stamp.path)) return false;
  to.push_back(std::move(stamp));
  return true;
}

std::string textOfStamp(const FileStamp& stamp) {
  const std::string path = escaped(stamp.path);
  if (!stamp.isThere) return "- - - " + path;
  return fmt::format("{} {} {} {}", stamp.size, stamp.modified, stamp.inode, path);
}

bool readParams(std::string_view text, ParamsSum& to) {
  const std::string_view length = takeUntil(text, ' ');
  return readNumber(length, to.length) && readNumber(text, to.sum, 16);
}

bool readState(std::string_view text, bool& isDone) {
  isDone = text == "done";
  return isDone || text == "failed";
}

bool readLine(std::string_view key, std::string_view value, Record& to) {
  if (key == "state") return readState(value, to.isDone);
  if (key == "reason") return readText(value, to.reason);
  if (key == "detail") return readText(value, to.detail);
  if (key == "missing") return readText(value, to.missing);
  if (key == "input") return readText(value, to.input);
  if (key == "file") return readStamp(value, to.files);
  if (key == "settings") return readText(value, to.settings);
  if (key == "version") return readText(value, to.version);
  if (key == "tries") return readNumber(value, to.tries);
  if (key == "seconds") return readNumber(value, to.seconds);
  if (key == "ended") return readNumber(value, to.ended);
  return key == "params" && readParams(value, to.params);
}

}  // namespace

std::string textOf(const Record& record) {
  std::string text = fmt::format("state\t{}\n", record.isDone ? "done" : "failed");
  if (!record.isDone) text += fmt::format("reason\t{}\ndetail\t{}\n", escaped(record.reason), escaped(record.detail));
  text += fmt::format("input\t{}\n", escaped(record.input));
  for (const FileStamp& file : record.files) text += fmt::format("file\t{}\n", textOfStamp(file));
  text += fmt::format("settings\t{}\nversion\t{}\ntries\t{}\nseconds\t{:.6f}\nended\t{}\n", escaped(record.settings),
                      escaped(record.version), record.tries, record.seconds, record.ended);
  if (record.isDone) text += fmt::format("params\t{} {:08x}\n", record.params.length, record.params.sum);
  if (record.isDone && !record.missing.empty()) text += fmt::format("missing\t{}\n", escaped(record.missing));
  return text + "end\t\n";
}

std::optional<Record> recordFrom(const std::string& text) {
  Record record;
  std::string_view left = text;
  bool hasState = false;
  while (!left.empty()) {
    if (left == "end\t\n") return hasState && !record.input.empty() ? std::optional(record) : std::nullopt;
    std::string_view line = takeUntil(left, '\n');
    const std::string_view key = takeUntil(line, '\t');
    if (!readLine(key, line, record)) return std::nullopt;
    hasState = hasState || key == "state";
  }
  return std::nullopt;
}

std::optional<Record> readRecord(const std::string& directory) {
  const std::optional<std::string> text = readSmallFile(directory + "/" + kStatusName);
  return text ? recordFrom(*text) : std::nullopt;
}

void writeRecord(const std::string& directory, const Record& record, bool isSynced) {
  writeSmallFile(directory + "/" + kStatusName, textOf(record), isSynced);
}

bool hasItsParams(const std::string& directory, const Record& record) {
  return ::access((directory + "/" + kMarkerName).c_str(), F_OK) == 0 &&
         sumOfParams(directory + "/" + kParamsName) == record.params;
}

bool isOf(const Record& record, const Expected& expected) {
  return record.input == expected.input && record.settings == expected.settings && record.version == expected.version;
}

}  // namespace batch
