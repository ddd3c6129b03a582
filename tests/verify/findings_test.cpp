// What verification finds, as values with their places.
#include "verify/findings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "support/temporary_directory.h"

namespace verify {
namespace {

using testing::HasSubstr;

TEST(FindingsTest, AFindingHasItsFileItsObjectAndItsReason) {
  Verdict verdict{"job.odb", State::sound, {}};
  Findings findings(verdict);
  findings.add("/steps/A", "is wrong");
  findings.add("/steps/A", "is wrong");
  EXPECT_FALSE(findings.guarded([] { throw base::FileError("other.odb", "/steps/B", "is wrong"); }));
  EXPECT_TRUE(findings.guarded([] {}));
  ASSERT_EQ(verdict.findings.size(), 2U);
  EXPECT_EQ(verdict.state, State::damaged);
  EXPECT_EQ(verdict.findings[0].severity, base::Severity::error);
  EXPECT_EQ(verdict.findings[0].place, (base::Place{"job.odb", 0, {}, "/steps/A"}));
  EXPECT_EQ(verdict.findings[0].reason, "is wrong");
  EXPECT_EQ(verdict.findings[1].place, (base::Place{"job.odb", 0, {}, "/steps/B"}));
}

TEST(FindingsTest, WhatIsNoDamageIsANoteAndNotSaidBesideDamage) {
  Verdict verdict{"job.odb", State::sound, {}};
  Findings findings(verdict);
  findings.concludeWith(State::withoutChecksums, "has no checksums");
  ASSERT_EQ(verdict.findings.size(), 1U);
  EXPECT_EQ(verdict.findings[0].severity, base::Severity::note);
  EXPECT_EQ(verdict.state, State::withoutChecksums);
  findings.add("", "is damaged");
  findings.concludeWith(State::oldLayout, "has layout 1");
  EXPECT_EQ(verdict.findings.size(), 2U);
  EXPECT_EQ(verdict.state, State::damaged);
}

TEST(FindingsTest, OfVeryManyTheRestIsCounted) {
  Verdict verdict{"job.odb", State::sound, {}};
  Findings findings(verdict);
  for (int i = 0; i < 1005; ++i) findings.add("/steps/" + std::to_string(i), "is wrong");
  findings.add("/steps/0", "is wrong");
  findings.close();
  ASSERT_EQ(verdict.findings.size(), 1001U);
  EXPECT_EQ(verdict.findings.back().severity, base::Severity::note);
  EXPECT_EQ(verdict.findings.back().reason, "further findings, not shown: 5");
}

TEST(FindingsTest, AFileOfSomethingElseIsOneFindingOfTheWholeFile) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("text.odb");
  std::ofstream(path) << "not a database, but long enough to be taken for one at first sight";
  const Verdict verdict = verifyFile(path);
  EXPECT_EQ(verdict.state, State::damaged);
  ASSERT_EQ(verdict.findings.size(), 1U);
  EXPECT_EQ(verdict.findings[0].place, (base::Place{path, 0, {}, ""}));
  EXPECT_THAT(verdict.findings[0].reason, HasSubstr("not"));
}

}  // namespace
}  // namespace verify
