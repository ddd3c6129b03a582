#include "tool/progress_line.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace tool {
namespace {

TEST(ProgressLine, SaysShareRateAndTimeLeft) {
  EXPECT_EQ(progressText("job.frd", 450'000'000, 1'000'000'000, 2.0), "job.frd: 45 %, 225 MB/s, 2 s left");
  EXPECT_EQ(progressText("job.frd", 1'000'000, 4'000'000'000, 1.0), "job.frd: 0 %, 1 MB/s, 3999 s left");
  EXPECT_EQ(progressText("job.frd", 0, 100, 0.0), "job.frd: 0 %, 0 MB/s") << "nothing is known yet";
  EXPECT_EQ(progressText("job.frd", 100, 100, 3.0), "job.frd: writing the database");
}

TEST(ProgressLine, LeavesWhatIsNoTerminalAlone) {
  std::FILE* const file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  {
    ProgressLine line("job.frd", file);
    line.show(1, 2);
    line.show(2, 2);
  }
  EXPECT_EQ(std::ftell(file), 0);
  std::fclose(file);
}

}  // namespace
}  // namespace tool
