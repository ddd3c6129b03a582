#include "batch/state/completion_record.h"

#include <gtest/gtest.h>

namespace batch {
namespace {

Record doneRecord() {
  Record record;
  record.isDone = true;
  record.input = "/runs/a \\ b\t\n/job.odb";
  record.files = {{"/runs/a b", true, 12, 1'700'000'000'123'456'789, 18446744073709551615U}, {"/no\nfile"}};
  record.settings = "0a1b2c3d.77";
  record.version = "0.1.0";
  record.tries = 2;
  record.seconds = 0.5;
  record.ended = 1'700'000'001'000'000'000;
  record.params = {4096, 0xfeU};
  return record;
}

TEST(CompletionRecord, SaysInLinesWhatIsDone) {
  EXPECT_EQ(textOf(doneRecord()),
            "state\tdone\n"
            "input\t/runs/a \\\\ b\\t\\n/job.odb\n"
            "file\t12 1700000000123456789 18446744073709551615 /runs/a b\n"
            "file\t- - - /no\\nfile\n"
            "settings\t0a1b2c3d.77\n"
            "version\t0.1.0\n"
            "tries\t2\n"
            "seconds\t0.500000\n"
            "ended\t1700000001000000000\n"
            "params\t4096 000000fe\n"
            "end\t\n");
}

TEST(CompletionRecord, ComesBackAsItWas) {
  EXPECT_EQ(recordFrom(textOf(doneRecord())), doneRecord());
  Record failed = doneRecord();
  failed.isDone = false;
  failed.params = {};
  failed.reason = "extraction failed";
  failed.detail = "a\tb\nc\\";
  EXPECT_EQ(recordFrom(textOf(failed)), failed);
  Record incomplete = doneRecord();
  incomplete.missing = "the file is cut off;\nno record X*";
  EXPECT_EQ(recordFrom(textOf(incomplete)), incomplete);
}

TEST(CompletionRecord, IsNoneWhereAnyPieceIsMissing) {
  const std::string whole = textOf(doneRecord());
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(recordFrom(whole.substr(0, length)), std::nullopt) << length;
  }
}

TEST(CompletionRecord, IsNoneWhereALineIsOdd) {
  for (const char* line : {"state\tdune", "tries\t-1", "tries\t1x", "tries\t", "seconds\tnone",
                           "ended\t99999999999999999999", "params\t1", "params\t1 xyz", "params\t-1 0", "file\t1 2 /a",
                           "file\t1 2 3x /a", "input\ta\\", "input\ta\\x", "unknown\t1", "", "no tab"}) {
    EXPECT_EQ(recordFrom("state\tdone\ninput\t/a\n" + std::string(line) + "\nend\t\n"), std::nullopt) << line;
  }
  EXPECT_NE(recordFrom("state\tdone\ninput\t/a\nend\t\n"), std::nullopt);
  EXPECT_EQ(recordFrom("input\t/a\nend\t\n"), std::nullopt) << "no state";
  EXPECT_EQ(recordFrom("state\tdone\nend\t\n"), std::nullopt) << "no input";
  EXPECT_EQ(recordFrom("state\tdone\ninput\t/a\nend\t\nmore\n"), std::nullopt) << "something behind the end";
}

}  // namespace
}  // namespace batch
