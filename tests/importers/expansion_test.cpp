// What becomes of shells, layers and sectors in the result file. That nodes lie where this says is tested on results of
// the solver (test_expansion.py).
#include "importers/calculix/expansion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "importers/calculix/sector_copies.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

const std::string kShells = "*NODE,NSET=All\n1,\n2,\n3,\n4,\n5,\n6,\n";
const std::string kLayered = kShells +
                             "*ELEMENT,TYPE=S3,ELSET=A\n30,1,2,3\n10,2,3,4\n*ELEMENT,TYPE=T3D2,ELSET=B\n50,5,6\n"
                             "*SHELL SECTION,ELSET=A,COMPOSITE\n0.1,,M\n0.2,,M\n";

class ExpansionTest : public testing::Test {
 protected:
  Deck read(const std::string& text) {
    return readDeck(writeText(directory_, "job.inp", text), [](const base::Diagnostic&) {});
  }

  TemporaryDirectory directory_;
};

// Wedges of six nodes.
FrdElements wedges(const std::vector<int>& labels, const std::vector<int>& connectivity) {
  return {1, {{2, 6, labels, connectivity}}};
}

TEST_F(ExpansionTest, AShellStandsForItsSolid) {
  const Deck deck = read(kShells + "*ELEMENT,TYPE=S3,ELSET=A\n10,1,2,3\n20,2,3,4\n*SURFACE,NAME=UP\nA,SPOS\n");
  const Expansion expansion(deck, wedges({10, 20}, {11, 12, 13, 21, 22, 23, 12, 13, 14, 22, 23, 24}));
  EXPECT_THAT(expansion.nodesOf(1), ElementsAre(11, 21));
  EXPECT_THAT(expansion.nodesOf(2), ElementsAre(12, 22));
  EXPECT_THAT(expansion.nodesOf(5), IsEmpty());
  EXPECT_THAT(expansion.elementsOf(10), IsEmpty()) << "it has the same label";
  EXPECT_THAT(expansion.membersOf(deck.nodeSets.at("ALL")),
              ElementsAre(1, 2, 3, 4, 5, 6, 11, 12, 13, 14, 21, 22, 23, 24));
  EXPECT_THAT(expansion.membersOf(deck.nodeSets.at("UP")), ElementsAre(1, 2, 3, 4, 21, 22, 23, 24));
  EXPECT_THAT(expansion.membersOf(deck.elementSets.at("UP")), ElementsAre(10, 20));
}

TEST_F(ExpansionTest, AnElementThatIsWrittenAsItIsStandsForItself) {
  const Deck deck = read(kShells + "*ELEMENT,TYPE=S3,ELSET=A\n10,1,2,3\n*SURFACE,NAME=UP\nA,SPOS\n");
  const Expansion expansion(deck, {1, {{7, 3, {10}, {1, 2, 3}}}});
  EXPECT_THAT(expansion.nodesOf(1), IsEmpty());
  EXPECT_THAT(expansion.membersOf(deck.nodeSets.at("UP")), ElementsAre(1, 2, 3));
}

TEST_F(ExpansionTest, ASolidOfTheDeckIsNoExpansion) {
  const Deck deck = read("*ELEMENT,TYPE=C3D6\n10,1,2,3,4,5,6\n");
  EXPECT_THAT(Expansion(deck, wedges({10}, {1, 2, 3, 4, 5, 6})).nodesOf(1), IsEmpty());
}

TEST_F(ExpansionTest, LayersFollowTheHighestLabelOfTheDeck) {
  const Deck deck = read(kLayered);
  const Expansion expansion(deck,
                            wedges({51, 52, 53, 54}, {102, 103, 104, 112, 113, 114, 122, 123, 124, 132, 133, 134,
                                                      201, 202, 203, 211, 212, 213, 221, 222, 223, 231, 232, 233}));
  EXPECT_THAT(expansion.elementsOf(10), ElementsAre(51, 52));
  EXPECT_THAT(expansion.elementsOf(30), ElementsAre(53, 54));
  EXPECT_THAT(expansion.nodesOf(4), ElementsAre(104, 114, 124, 134));
  EXPECT_THAT(expansion.membersOf(deck.elementSets.at("A")), ElementsAre(10, 30, 51, 52, 53, 54));
  EXPECT_THAT(expansion.membersOf(deck.elementSets.at("B")), ElementsAre(50));
}

TEST_F(ExpansionTest, OtherCountsOfNewElementsAreNoLayers) {
  const Deck deck = read(kLayered);
  const Expansion expansion(deck, wedges({51, 52}, {102, 103, 104, 112, 113, 114, 122, 123, 124, 132, 133, 134}));
  EXPECT_THAT(expansion.elementsOf(10), IsEmpty());
}

class SectorTest : public ExpansionTest {
 protected:
  Deck bars(const std::string& more = "") {
    return read("*NODE\n1,\n2,\n3,\n*ELEMENT,TYPE=T3D2\n10,1,2\n20,2,3\n" + more +
                "*CYCLIC SYMMETRY MODEL,N=9,NGRAPH=2\n*CYCLIC SYMMETRY MODEL,N=8,NGRAPH=3\n");
  }

  static FrdElements lines(const std::vector<int>& labels, const std::vector<int>& connectivity) {
    return {1, {{11, 2, labels, connectivity}}};
  }

  std::vector<std::string> warnings_;
};

TEST_F(SectorTest, CopiesHaveLabelsThatAreLargerByOneNumber) {
  const Deck deck = bars();
  EXPECT_EQ(deck.sectorCopies->sectors, 3);
  const auto sectors = sectorsOf(deck, lines({10, 20, 30, 40, 50}, {1, 2, 2, 3, 8, 9, 9, 10, 15, 16}));
  ASSERT_TRUE(sectors.has_value());
  ASSERT_EQ(sectors->size(), 3U);
  EXPECT_THAT(sectors->at(0).elements, ElementsAre(10, 20));
  EXPECT_THAT(sectors->at(1).elements, ElementsAre(30, 40));
  EXPECT_THAT(sectors->at(1).nodes, ElementsAre(8, 9, 10));
  EXPECT_THAT(sectors->at(2).elements, ElementsAre(50)) << "another model has fewer copies";
  EXPECT_THAT(sectors->at(2).nodes, ElementsAre(15, 16));
}

TEST_F(SectorTest, WhatIsNoCopyIsNoSector) {
  const Deck deck = bars();
  EXPECT_FALSE(sectorsOf(deck, lines({10, 20, 31}, {1, 2, 2, 3, 8, 9}))) << "no element has this label";
  EXPECT_FALSE(sectorsOf(deck, lines({10, 20, 30, 40}, {1, 2, 2, 3, 8, 9, 10, 11}))) << "nodes of two offsets";
  EXPECT_FALSE(sectorsOf(deck, lines({10, 20, 70}, {1, 2, 2, 3, 8, 9}))) << "a fourth sector";
  EXPECT_FALSE(sectorsOf(deck, lines({-10}, {1, 2})));
  const auto warn = [this](const base::Diagnostic& said) { warnings_.push_back(base::textOf(said)); };
  EXPECT_THAT(setsOfSectors(deck, std::nullopt, warn), IsEmpty());
  EXPECT_THAT(warnings_, ElementsAre(EndsWith("job.inp:9: warning: the copies of the sector (NGRAPH) cannot be "
                                              "distinguished in the results")));
}

TEST_F(SectorTest, TheirSetsLeaveNamesOfTheDeckAlone) {
  const std::vector<Sector> sectors = {{{10}, {1, 2}}};
  const auto namesFor = [&](const std::string& more) {
    std::vector<std::string> names;
    for (const DeckSet& set : setsOfSectors(bars(more), sectors, {})) names.push_back(set.names.front());
    return names;
  };
  EXPECT_THAT(namesFor(""), ElementsAre("SECTOR-1", "SECTOR-1-NODES"));
  EXPECT_THAT(namesFor("*NSET,NSET=SECTOR 5\n1\n"), ElementsAre("CYCLIC-SECTOR-1", "CYCLIC-SECTOR-1-NODES"));
}

TEST_F(SectorTest, AHugeNumberOfCopiesTakesNoMemory) {
  const Deck deck = read("*ELEMENT,TYPE=T3D2\n10,1,2\n*CYCLIC SYMMETRY MODEL,N=2000000000,NGRAPH=2000000000\n");
  const auto sectors = sectorsOf(deck, lines({10}, {1, 2}));
  ASSERT_TRUE(sectors.has_value());
  EXPECT_EQ(sectors->size(), 1U);
}

}  // namespace
}  // namespace importers::calculix
