#include "base/own_programs.h"

#include <gtest/gtest.h>

#include <filesystem>

TEST(OwnPrograms, AreBesideTheOneThatRuns) {
  EXPECT_EQ(base::ownProgram("odd_program"), std::filesystem::canonical(KOLVEX_ODD_PROGRAM).string());
}

TEST(OwnPrograms, AreElseWhereKolvexIsInstalled) {
  const std::filesystem::path elsewhere = base::ownProgram("no-such-program");
  EXPECT_TRUE(elsewhere.is_absolute());
  EXPECT_EQ(elsewhere.parent_path().filename(), "kolvex");
  EXPECT_EQ(elsewhere.filename(), "no-such-program");
}
