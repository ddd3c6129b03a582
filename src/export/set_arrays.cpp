#include "export/set_arrays.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>

#include "inspect/model_sets.h"
#include "odbstore/database_file.h"

namespace vtk_export {

namespace {

SetArray arrayOf(const odbstore::DatabaseFile& file, const inspect::ModelMesh& mesh, const inspect::ModelSet& set,
                 std::size_t place) {
  const bool isOfCells = set.kind == odbstore::SetKind::element;
  SetArray array = {fmt::format("set {}{}{}", set.owner, set.owner.empty() ? "" : ".", set.name),
                    isOfCells ? Association::cells : Association::points,
                    std::vector<std::uint8_t>(isOfCells ? mesh.elementLabels.size() : mesh.nodeLabels.size())};
  for (const inspect::SetLabels& members : inspect::setLabels(file, place)) {
    const std::string instance(members.instance);
    for (const int label : members.labels) {
      const std::int64_t at = isOfCells ? mesh.cellOf(instance, label) : mesh.pointOf(instance, label);
      if (at >= 0) array.isMember[static_cast<std::size_t>(at)] = 1;
    }
  }
  return array;
}

}  // namespace

std::vector<SetArray> setArrays(const odbstore::Reader& reader, const inspect::ModelMesh& mesh,
                                const std::vector<std::string>& patterns) {
  std::vector<SetArray> arrays;
  std::vector<bool> fitsOne(patterns.size());
  const auto isChosen = [&](const std::string& set) {
    bool isAny = patterns.empty();
    for (std::size_t i = 0; i < patterns.size(); ++i) {
      if (patterns[i] == set || ::fnmatch(patterns[i].c_str(), set.c_str(), 0) == 0) isAny = fitsOne[i] = true;
    }
    return isAny;
  };
  const odbstore::DatabaseFile& file = *reader.file();
  const std::vector<inspect::ModelSet> sets = inspect::modelSets(file);
  for (std::size_t i = 0; i < sets.size(); ++i) {
    if (isChosen(std::string(sets[i].name))) arrays.push_back(arrayOf(file, mesh, sets[i], i));
  }
  const auto unused = std::find(fitsOne.begin(), fitsOne.end(), false);
  if (unused == fitsOne.end()) return arrays;
  const std::string& pattern = patterns[static_cast<std::size_t>(unused - fitsOne.begin())];
  throw odbstore::StoreError(file.name(), "", fmt::format("there is no set {}", pattern));
}

}  // namespace vtk_export
