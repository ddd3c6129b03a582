#include "odbscan/scan.h"

#include <fmt/core.h>

#include "base/file_error.h"
#include "hdf5/file.h"
#include "odbscan/inventory.h"
#include "odbscan/scan_context.h"
#include "odbscan/upgrade.h"
#include "odbstore/inspection.h"
#include "odbstore/layout.h"
#include "odbstore/names.h"
#include "odbstore/preflight.h"

namespace odbscan {

namespace {

namespace attributes = odbstore::attributes;
namespace links = odbstore::links;

constexpr unsigned kSuperblockOfStrictFiles = 3;

int readLayout(const h5::Group& root) {
  if (!root.hasAttribute(attributes::kLayout)) {
    throw base::FileError("", "", "is an HDF5 file but not a database: it has no attribute \"layout\"");
  }
  const int layout = root.intAttribute(attributes::kLayout, 0);
  if (layout > odbstore::kNewestLayout) {
    throw base::FileError("", "",
                          fmt::format("has layout {}, written by a newer program; this one reads layouts up to {}",
                                      layout, odbstore::kNewestLayout));
  }
  if (layout < 1) throw base::FileError("", "", fmt::format("has layout {}, which does not exist", layout));
  return layout;
}

void checkSuperblock(int layout, unsigned superblock, bool isChecked) {
  if (superblock != kSuperblockOfStrictFiles) {
    throw base::FileError("", "",
                          fmt::format("a file of layout {} must have HDF5 superblock {}, this one has {}", layout,
                                      kSuperblockOfStrictFiles, superblock));
  }
  if (!isChecked) {
    throw base::FileError("", "",
                          fmt::format("a file of layout {} must start with a superblock of 8-byte addresses", layout));
  }
}

// Where the checksums of layout 2 stand.
void scanChecksums(const h5::Group& root, ScanContext& context) {
  const std::optional<h5::Dataset> sums = context.once(root.findDataset(links::kChecksums));
  if (!sums) return;
  const std::string algorithm = sums->stringAttribute(attributes::kAlgorithm, "");
  if (algorithm != "crc32c") sums->fail(fmt::format("the algorithm \"{}\" is not known", algorithm));
  if (sums->dims().size() != 1 || sums->format() != base::NumberFormat::uint32 || !sums->offset()) {
    sums->fail("must be unsigned 32-bit integers in one row, lowest byte first, in one piece");
  }
  context.catalog.setChecksums(*sums->offset(), sums->count(), sums->intAttribute(attributes::kBlockSize, 0));
}

void scanAll(const h5::Group& root, ScanContext& context) {
  context.guarded([&] { scanModel(root, context); });
  context.guarded([&] { scanLocations(root, context); });
  context.guarded([&] { scanSteps(root, context); });
  if (context.layout() == 2) context.guarded([&] { scanChecksums(root, context); });
}

}  // namespace

h5::Group openDatabase(int descriptor, int& layout) {
  const odbstore::FileStart start = odbstore::examine(descriptor, "");
  return h5::openFile(descriptor, start.bytes, [&](const h5::Group& root) {
    layout = readLayout(root);
    if (layout < 2) return h5::Profile::free;
    checkSuperblock(layout, h5::superblockOf(root), start.isChecked);
    return h5::Profile::strict;
  });
}

std::vector<std::byte> scan(const h5::Group& root, int layout) {
  ScanContext context(layout, false);
  scanAll(root, context);
  return context.catalog.build();
}

std::string inspect(const h5::Group& root, int layout) {
  // Layout 1 may have any other contents, which are ignored.
  odbstore::Inspection inspection = layout == 1 ? odbstore::Inspection{} : takeInventory(root);
  inspection.layout = layout;
  if (layout == 1) {
    try {
      readOld(root);
    } catch (const base::FileError& problem) {
      inspection.problems.push_back({problem.object(), problem.reason()});
    }
    return odbstore::packed(inspection);
  }
  ScanContext context(layout, true);
  scanAll(root, context);
  inspection.catalog = context.catalog.build();
  for (const base::FileError& problem : context.problems()) {
    inspection.problems.push_back({problem.object(), problem.reason()});
  }
  return odbstore::packed(inspection);
}

}  // namespace odbscan
