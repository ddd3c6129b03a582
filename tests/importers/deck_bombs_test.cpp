// Small decks that ask for much.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "importers/calculix/deck/deck.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

class DeckBombsTest : public testing::Test {
 protected:
  Deck read(const std::string& text) {
    const WarningSink warn = [this](const base::Diagnostic& said) { warnings_.push_back(base::textOf(said)); };
    return readDeck(writeText(directory_, "job.inp", text), warn);
  }

  static std::string nodes(int count) {
    std::string text = "*NODE\n";
    for (int i = 1; i <= count; ++i) text += std::to_string(i) + ",\n";
    return text;
  }

  TemporaryDirectory directory_;
  std::vector<std::string> warnings_;
};

TEST_F(DeckBombsTest, RangesTakeInNoMoreThanTheMeshHas) {
  std::string bomb = "*NODE\n3,0,0,0\n1000000000,0,0,0\n";
  for (char set = 'A'; set <= 'L'; ++set) bomb += std::string("*NSET,NSET=") + set + ",GENERATE\n1,2147483647\n";
  ASSERT_LT(bomb.size(), 500U);
  const Deck deck = read(bomb);
  EXPECT_EQ(deck.nodeSets.size(), 12U);
  EXPECT_THAT(deck.nodeSets.at("L").labels, ElementsAre(3, 1000000000));
  EXPECT_THAT(warnings_, ElementsAre(EndsWith("job.inp:4: warning: labels that no node of the deck has are left out of "
                                              "the sets A, B, C, D, E, F, G, H, I, J, K, L (25769803740 in all)")));
}

TEST_F(DeckBombsTest, RangesGoWithTheirIncrementThroughLabelsThatLieApart) {
  const Deck deck =
      read("*NODE\n4,0\n7,0\n10,0\n11,0\n*NSET,NSET=A,GENERATE\n1,1000000,3\n*NSET,NSET=B,GENERATE\n7,11,4\n");
  EXPECT_THAT(deck.nodeSets.at("A").labels, ElementsAre(4, 7, 10));
  EXPECT_THAT(deck.nodeSets.at("B").labels, ElementsAre(7, 11));
}

TEST_F(DeckBombsTest, WithoutAMeshRangesHaveALimitInAll) {
  EXPECT_THAT(failureOf([&] { read("*NSET,NSET=A\n*NSET,NSET=B,GENERATE\n1,100000000\n"); }),
              testing::ContainsRegex("job.inp:2: error: the sets of the deck list more than 80000.. labels in all$"));
}

TEST_F(DeckBombsTest, SetsWithinSetsHaveEachMemberOnce) {
  std::string bomb = "*NODE,NSET=S\n1,\n2,\n3,\n";
  std::string last = "S";
  for (int i = 0; i < 15; ++i) {
    const std::string next = "S" + std::to_string(i);
    bomb += "*NSET,NSET=" + next + "\n";
    for (int k = 0; k < 8; ++k) bomb += last + ",";
    bomb += "\n";
    last = next;
  }
  ASSERT_LT(bomb.size(), 1000U);
  const Deck deck = read(bomb);
  EXPECT_THAT(deck.nodeSets.at("S14").labels, ElementsAre(1, 2, 3));
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(DeckBombsTest, ManySetsOfTheWholeMeshHaveALimitInAll) {
  const int count = 20'000;
  std::string bomb = nodes(count) + "*NSET,NSET=ALL,GENERATE\n1," + std::to_string(count) + "\n";
  for (int i = 0; i < 1000; ++i) bomb += "*NSET,NSET=A" + std::to_string(i) + "\nALL\n";
  EXPECT_THAT(failureOf([&] { read(bomb); }), HasSubstr("the sets of the deck list more than"));
}

TEST_F(DeckBombsTest, ManySurfacesOfTheWholeMeshHaveALimitInAll) {
  std::string bomb = "*ELEMENT,TYPE=S3,ELSET=E\n";
  for (int i = 1; i <= 20'000; ++i) bomb += std::to_string(i) + ",1,2,3\n";
  for (int i = 0; i < 200; ++i) bomb += "*SURFACE,NAME=S" + std::to_string(i) + "\nE,S1\n";
  EXPECT_THAT(failureOf([&] { read(bomb); }), HasSubstr("the sets of the deck list more than"));
}

TEST_F(DeckBombsTest, ASetMayTakeInItself) {
  const Deck deck = read("*NODE\n1,\n2,\n*NSET,NSET=A\n1,A,A\n2,A\n");
  EXPECT_THAT(deck.nodeSets.at("A").labels, ElementsAre(1, 2));
}

TEST_F(DeckBombsTest, ASetTakesInWhatAnotherOneHasSoFar) {
  const Deck deck = read("*NSET,NSET=A\n1\n*NSET,NSET=B\nA\n*NSET,NSET=A\n2\n*NODE\n1,\n2,\n");
  EXPECT_THAT(deck.nodeSets.at("B").labels, ElementsAre(1));
  EXPECT_THAT(deck.nodeSets.at("A").labels, ElementsAre(1, 2));
}

TEST_F(DeckBombsTest, LabelsThatTheMeshDoesNotHaveAreCounted) {
  const Deck deck = read(
      "*NSET,NSET=A\n1,5\n*NODE\n1,\n2,\n*NSET,NSET=B\n2,6,7\n*ELEMENT,TYPE=T3D2\n9,1,2\n"
      "*ELSET,ELSET=E\n8,9\n");
  EXPECT_THAT(deck.nodeSets.at("A").labels, ElementsAre(1));
  EXPECT_THAT(deck.nodeSets.at("B").labels, ElementsAre(2));
  EXPECT_THAT(deck.elementSets.at("E").labels, ElementsAre(9));
  EXPECT_THAT(
      warnings_,
      ElementsAre(
          EndsWith(":1: warning: labels that no node of the deck has are left out of the sets A, B (3 in all)"),
          EndsWith(":10: warning: labels that no element of the deck has are left out of the sets E (1 in all)")));
}

TEST_F(DeckBombsTest, WhereTheMeshIsNotAllThereEveryLabelCounts) {
  EXPECT_THAT(read("*INCLUDE,INPUT=none\n*NODE\n1,\n*NSET,NSET=A\n5\n").nodeSets.at("A").labels, ElementsAre(5));
  EXPECT_THAT(read("*RESTART,READ\n*NODE\n1,\n*NSET,NSET=A\n5\n").nodeSets.at("A").labels, ElementsAre(5));
  EXPECT_THAT(read("*NSET,NSET=A\n5\n").nodeSets.at("A").labels, ElementsAre(5));
}

TEST_F(DeckBombsTest, FilesThatIncludeTheNextTwiceEnd) {
  for (int i = 1; i <= 30; ++i) {
    const std::string next = "*INCLUDE,INPUT=" + std::to_string(i + 1) + ".inc\n";
    writeText(directory_, std::to_string(i) + ".inc", next + next);
  }
  writeText(directory_, "31.inc", "");
  EXPECT_THAT(failureOf([&] { read("*INCLUDE,INPUT=1.inc\n"); }),
              HasSubstr(".inc:1: error: the deck includes more than 1000 files"));
}

TEST_F(DeckBombsTest, IncludedFilesHaveALimitOfBytesInAll) {
  writeText(directory_, "large.inc", "");
  std::filesystem::resize_file(directory_.file("large.inc"), (std::uintmax_t{1} << 30) + 1);  // takes no place on disk
  EXPECT_THAT(failureOf([&] { read("\n*INCLUDE,INPUT=large.inc\n"); }),
              EndsWith("job.inp:2: error: the deck includes more than 1073741824 bytes"));
}

}  // namespace
}  // namespace importers::calculix
