// A database being written in a directory of its own.
#pragma once

#include <gtest/gtest.h>

#include "odbstore/catalog_lines.h"
#include "odbstore/database_file.h"
#include "odbstore/reader.h"
#include "odbstore/results_for_writers.h"
#include "odbstore/scan_program.h"
#include "odbstore/sum_check.h"
#include "odbwriter/database_writer.h"
#include "support/temporary_directory.h"

namespace odbstore {

inline const LocationInfo kNodal{"I", Position::nodal, "", 0, ""};

class DatabaseWriterTest : public testing::TestWithParam<WriterOptions> {
 protected:
  std::vector<float> rowsOf(const StoredBlock& block, int frame) {
    std::vector<float> rows(static_cast<std::size_t>(block.rows() * block.width()));
    block.read(frame, rows.data());
    return rows;
  }

  // What the program that reads HDF5's structure says of the file is what its catalog says, and all its sums are right.
  void expectCatalogIsRight() {
    const std::shared_ptr<const DatabaseFile> file = DatabaseFile::open(path_, path_);
    ASSERT_TRUE(file->isCatalogued());
    const std::optional<Catalog> scanned = scanCatalog(file->descriptor(), path_, file->size());
    ASSERT_TRUE(scanned);
    EXPECT_EQ(linesOf(file->catalog()), linesOf(*scanned));
    compareSums(*file, [](const DamagedPiece& piece) { ADD_FAILURE() << "piece at byte " << piece.bytes.begin; });
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_.file("job.odb");
};

// For what does not depend on how rows are stored.
using DatabaseWriterFileTest = DatabaseWriterTest;

}  // namespace odbstore
