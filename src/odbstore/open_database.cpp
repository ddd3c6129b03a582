#include "odbstore/open_database.h"

#include <fmt/format.h>

#include "hdf5/file.h"
#include "odbstore/layout.h"
#include "odbstore/preflight.h"
#include "odbstore/store_error.h"

namespace odbstore {

namespace {

constexpr unsigned kSuperblockOfStrictFiles = 3;

int readLayout(const h5::Group& root, const std::string& name) {
  if (!root.hasAttribute(attributes::kLayout)) {
    throw StoreError(name, "", "is an HDF5 file but not a database: it has no attribute \"layout\"");
  }
  const int layout = root.intAttribute(attributes::kLayout, 0);
  if (layout > kNewestLayout) {
    throw StoreError(name, "",
                     fmt::format("has layout {}, written by a newer program; this one reads layouts up to {}", layout,
                                 kNewestLayout));
  }
  if (layout < 1) throw StoreError(name, "", fmt::format("has layout {}, which does not exist", layout));
  return layout;
}

void checkSuperblock(const std::string& name, unsigned superblock, bool isChecked) {
  if (superblock != kSuperblockOfStrictFiles) {
    throw StoreError(name, "",
                     fmt::format("a file of layout {} must have HDF5 superblock {}, this one has {}", kNewestLayout,
                                 kSuperblockOfStrictFiles, superblock));
  }
  if (!isChecked) {
    throw StoreError(
        name, "", fmt::format("a file of layout {} must start with a superblock of 8-byte addresses", kNewestLayout));
  }
}

}  // namespace

h5::Group openDatabase(const std::string& path, int& layout) { return openDatabase(path, path, layout); }

h5::Group openDatabase(const std::string& path, const std::string& name, int& layout) {
  const Preflight preflight = checkBeforeOpening(path);
  return h5::openFile(path, name, preflight.bytes, [&](const h5::Group& root) {
    layout = readLayout(root, name);
    if (layout != kNewestLayout) return h5::Profile::free;
    checkSuperblock(name, h5::superblockOf(root), preflight.isChecked);
    return h5::Profile::strict;
  });
}

}  // namespace odbstore
