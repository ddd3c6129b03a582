#include "importers/vtk/vtk_file.h"

#include <span>

#include "importers/vtk/input_file.h"
#include "importers/vtk/legacy_file.h"
#include "importers/vtk/xml_file.h"

namespace importers::vtk {

namespace {

constexpr std::size_t kStartBytes = 512;

std::string startOf(const InputFile& file) {
  std::string start(kStartBytes, '\0');
  start.resize(file.read(0, std::as_writable_bytes(std::span(start))));
  return start;
}

}  // namespace

bool isXmlStart(std::string_view start) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  if (start.starts_with(mark)) start.remove_prefix(mark.size());
  const std::size_t first = start.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && start[first] == '<' && start.find("<VTKFile") != std::string_view::npos;
}

bool isLegacyStart(std::string_view start) { return start.starts_with("# vtk DataFile Version"); }

VtkFile readVtkFile(const InputFile& file) {
  const std::string start = startOf(file);
  if (isLegacyStart(start)) return readLegacyFile(file);
  if (isXmlStart(start)) return readXmlFile(file);
  if (start.empty()) throw CutOff(file.path(), 0, "the file is empty");
  throw ImportError(file.path(), 0, "not a file of VTK (expected <VTKFile, or \"# vtk DataFile Version\" on line 1)");
}

std::vector<std::string> filesNamedBy(const InputFile& file) {
  std::vector<std::string> paths;
  if (!isXmlStart(startOf(file)) || isGridOfXml(file)) return paths;
  const VtkFile collection = readXmlFile(file);
  for (const NamedFile& named : std::get<Collection>(collection).files) paths.push_back(named.path);
  return paths;
}

}  // namespace importers::vtk
