#include "batch/state/input_id.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace batch {
namespace {

TEST(InputId, ShowsWhereTheFileIsAndWhatItIsCalled) {
  EXPECT_EQ(inputId("/runs/0017/job.odb").substr(0, 9), "0017.job-");
  EXPECT_EQ(inputId("/job.odb").substr(0, 4), "job-");
  EXPECT_EQ(inputId("/a b/\xc3\xbc*.frd").substr(0, 8), "a_b.___-");
  EXPECT_EQ(inputId("/.hidden/job.odb").substr(0, 11), "hidden.job-");
}

TEST(InputId, IsNeitherHiddenNorLong) {
  for (const std::string& path : {std::string("/.../.odb"), std::string("/..a/..b"), std::string("/-/--x"),
                                  "/" + std::string(255, 'x') + "/" + std::string(255, 'y'), std::string("/")}) {
    const std::string id = inputId(path);
    EXPECT_NE(id.front(), '.') << path;
    EXPECT_NE(id.front(), '-') << path;
    EXPECT_LE(id.size(), 110U) << path;
    EXPECT_EQ(id.find('/'), std::string::npos) << path;
  }
}

TEST(InputId, TellsPathsOfEqualNamesApart) {
  std::set<std::string> ids;
  for (int i = 0; i < 100'000; ++i) ids.insert(inputId("/runs/" + std::to_string(i) + "/same/job.odb"));
  EXPECT_EQ(ids.size(), 100'000U);
  EXPECT_NE(inputId("/a/b/job.odb").substr(6), inputId("/c/b/job.odb").substr(6));
  EXPECT_NE(inputId("/a/job.odb"), inputId("/a/job.frd"));
}

}  // namespace
}  // namespace batch
