#include "importers/formats/formats.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

namespace importers {

namespace {

constexpr std::string_view kHdf5 = "\x89HDF\r\n\x1a\n";

std::string namesOf(const std::vector<KnownFormat>& formats) {
  std::vector<const char*> names;
  for (const KnownFormat& known : formats) names.push_back(known.format->name);
  return fmt::format("{}", fmt::join(names, ", "));
}

// The first bytes of a regular file; nothing for anything else.
std::string startOf(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return {};
  std::array<char, Importer::kStartBytes> start{};
  std::ifstream file(path, std::ios::binary);
  file.read(start.data(), start.size());
  return {start.data(), static_cast<std::size_t>(file.gcount())};
}

bool knows(const Importer& importer, const std::string& file) { return importer.recognises(startOf(file), file); }

// The file with the results: what is named, whatever its name, if the format knows it, else what the format makes of
// the name.
std::string resultsOf(const Importer& importer, const std::string& named) {
  return !startOf(named).empty() && knows(importer, named) ? named : importer.resultFile(named);
}

FoundFormat forcedFormat(const std::vector<KnownFormat>& formats, const std::string& named, const std::string& name) {
  for (const KnownFormat& known : formats) {
    if (known.format->name != name) continue;
    if (!known.importer) throw ImportError(named, 0, fmt::format("the format {} is not in this build", name));
    return {&known, resultsOf(*known.importer, named)};
  }
  throw ImportError(named, 0, fmt::format("there is no format {}; the formats are {}", name, namesOf(formats)));
}

bool exists(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

// The files that formats would read for what a user has named, without those that are the name itself.
std::vector<std::string> filesMeant(const std::vector<KnownFormat>& formats, const std::string& named) {
  std::vector<std::string> files;
  for (const KnownFormat& known : formats) {
    const std::string file = known.importer ? known.importer->resultFile(named) : named;
    if (file != named && std::find(files.begin(), files.end(), file) == files.end()) files.push_back(file);
  }
  return files;
}

// No format knows a file: says why.
[[noreturn]] void refuse(const std::vector<KnownFormat>& formats, const std::string& named) {
  const std::vector<std::string> meant = filesMeant(formats, named);
  const auto other = std::find_if(meant.begin(), meant.end(), exists);
  if (!exists(named) && other == meant.end()) {
    const std::string tried = meant.empty() ? "" : fmt::format(", nor does {}", fmt::join(meant, ", "));
    throw ImportError(named, 0, "the file does not exist" + tried);
  }
  const std::string file = other != meant.end() ? *other : named;
  const std::string start = startOf(file);
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(file, ignored)) throw ImportError(file, 0, "is not a regular file");
  if (start.empty()) throw ImportError(file, 0, "the file is empty");
  if (file.ends_with(".odb") && start.starts_with(kHdf5)) {
    throw ImportError(file, 0, "this is a database already; it needs no import");
  }
  std::vector<std::string> expected;
  std::string absent;
  for (const KnownFormat& known : formats) {
    if (known.importer) expected.push_back(fmt::format("{}: {}", known.format->name, known.importer->beginning()));
    if (!known.importer) absent += fmt::format("; {} is not in this build", known.format->name);
  }
  throw ImportError(
      file, 0,
      fmt::format("not a result file of a known format (expected {}){}", fmt::join(expected, ", or "), absent));
}

}  // namespace

std::vector<KnownFormat> makeFormats(const std::vector<Format>& table) {
  std::vector<KnownFormat> formats;
  for (const Format& format : table) {
    formats.push_back({&format, format.make == nullptr ? nullptr : format.make()});
  }
  return formats;
}

FoundFormat findFormat(const std::vector<KnownFormat>& formats, const std::string& named, const std::string& forced) {
  if (!forced.empty()) return forcedFormat(formats, named, forced);
  std::vector<FoundFormat> found;
  for (const KnownFormat& known : formats) {
    if (!known.importer) continue;
    const std::string file = resultsOf(*known.importer, named);
    if (knows(*known.importer, file)) found.push_back({&known, file});
  }
  if (found.size() == 1) return found.front();
  if (found.empty()) refuse(formats, named);
  std::vector<const char*> names;
  for (const FoundFormat& one : found) names.push_back(one.format->format->name);
  throw ImportError(
      named, 0,
      fmt::format("the file may be of several formats ({}); --format NAME says which it is", fmt::join(names, ", ")));
}

std::string formatList(const std::vector<Format>& table) {
  std::string list;
  for (const Format& format : table) {
    list += fmt::format("{:<10} {}{}\n", format.name, format.description,
                        format.make == nullptr ? " (not in this build)" : "");
  }
  return list;
}

}  // namespace importers
