#include "importers/vtk/vtk_file.h"

#include <array>

#include "importers/vtk/input_file.h"
#include "importers/vtk/legacy_file.h"
#include "importers/vtk/xml_file.h"

namespace importers::vtk {

namespace {

constexpr std::size_t kStartBytes = 512;

}  // namespace

bool isXmlStart(std::string_view start) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  if (start.starts_with(mark)) start.remove_prefix(mark.size());
  const std::size_t first = start.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && start[first] == '<' && start.find("<VTKFile") != std::string_view::npos;
}

bool isLegacyStart(std::string_view start) { return start.starts_with("# vtk DataFile Version"); }

VtkFile readVtkFile(const InputFile& file) {
  std::array<char, kStartBytes> text{};
  const std::size_t size = file.read(0, std::as_writable_bytes(std::span(text)));
  const std::string_view start(text.data(), size);
  if (isLegacyStart(start)) return readLegacyFile(file);
  if (isXmlStart(start)) return readXmlFile(file);
  if (size == 0) throw CutOff(file.path(), 0, "the file is empty");
  throw ImportError(file.path(), 0, "not a file of VTK (expected <VTKFile, or \"# vtk DataFile Version\" on line 1)");
}

}  // namespace importers::vtk
