// A database of layout 1, for tests of what becomes of one.
#pragma once

#include <gtest/gtest.h>
#include <hdf5.h>

#include <string>

#include "odbwriter/database_writer.h"

// Writes one that holds nothing but its own name.
inline void writeOldDatabase(const std::string& path, const std::string& name) {
  {
    odbstore::DatabaseWriter writer(path);
    writer.setName(name);
    writer.finish();
  }
  // As empty as it is, the number of the layout is all that tells one from the other.
  const hid_t file = H5Fopen(path.c_str(), H5F_ACC_RDWR, H5P_DEFAULT);
  const hid_t layout = H5Aopen(file, "layout", H5P_DEFAULT);
  const int one = 1;
  EXPECT_GE(H5Awrite(layout, H5T_NATIVE_INT, &one), 0);
  H5Aclose(layout);
  EXPECT_GE(H5Fclose(file), 0);
}
