// Surfaces of a deck and the sets that they become.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "importers/calculix/deck/deck.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Labels of nodes are those of the manual's figures.
const std::string kBrick8 = "*ELEMENT,TYPE=C3D8,ELSET=E\n1,1,2,3,4,5,6,7,8\n";
const std::string kBrick20 = "*ELEMENT,TYPE=C3D20R,ELSET=E\n1,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,\n16,17,18,19,20\n";
const std::string kWedge6 = "*ELEMENT,TYPE=C3D6,ELSET=E\n1,1,2,3,4,5,6\n";
const std::string kWedge15 = "*ELEMENT,TYPE=C3D15,ELSET=E\n1,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\n";
const std::string kTetrahedron10 = "*ELEMENT,TYPE=C3D10,ELSET=E\n1,1,2,3,4,5,6,7,8,9,10\n";

class DeckSurfacesTest : public testing::Test {
 protected:
  Deck read(const std::string& text) {
    const WarningSink warn = [this](const base::Diagnostic& said) { warnings_.push_back(base::textOf(said)); };
    return readDeck(writeText(directory_, "job.inp", text), warn);
  }

  // The nodes of a face of the element 1.
  std::vector<int> face(const std::string& element, const std::string& name) {
    return read(element + "*SURFACE,NAME=F\n1," + name + "\n").nodeSets.at("F").labels;
  }

  static std::vector<std::string> namesOf(const std::map<std::string, DeckSet>& sets) {
    std::vector<std::string> names;
    for (const auto& [canonical, set] : sets) names.insert(names.end(), set.names.begin(), set.names.end());
    return names;
  }

  TemporaryDirectory directory_;
  std::vector<std::string> warnings_;
};

TEST_F(DeckSurfacesTest, ASurfaceOfElementsIsASetOfThemAndOneOfItsNodes) {
  const Deck deck = read(kBrick8 + "2,5,6,7,8,9,10,11,12\n*SURFACE, NAME=Top face, TYPE=ELEMENT\nE, S2\n");
  EXPECT_THAT(deck.elementSets.at("TOPFACE").labels, ElementsAre(1, 2));
  EXPECT_THAT(deck.nodeSets.at("TOPFACE").labels, ElementsAre(5, 6, 7, 8, 9, 10, 11, 12));
  EXPECT_THAT(namesOf(deck.nodeSets), ElementsAre("Top face"));
  EXPECT_THAT(namesOf(deck.elementSets), ElementsAre("E", "Top face"));
  EXPECT_THAT(base::textOf(deck.nodeSets.at("TOPFACE").place), EndsWith("job.inp:4"));
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(DeckSurfacesTest, ASurfaceMayHaveSeveralFacesOfLabelsAndSets) {
  const Deck deck = read(kBrick8 + "*ELSET,ELSET=ONE\n1\n*SURFACE,NAME=S\nONE,S1\n 1 , s3\n");
  EXPECT_THAT(deck.elementSets.at("S").labels, ElementsAre(1));
  EXPECT_THAT(deck.nodeSets.at("S").labels, ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(DeckSurfacesTest, ASurfaceOfNodesIsASetOfNodes) {
  const Deck deck = read("*NSET,NSET=N\n4,2\n*SURFACE,NAME=S,TYPE=NODE\nN\n9\n7,\n");
  EXPECT_THAT(deck.nodeSets.at("S").labels, ElementsAre(2, 4, 7, 9));
  EXPECT_THAT(deck.elementSets, IsEmpty());
}

TEST_F(DeckSurfacesTest, SetsKeepTheirNamesBeforeSurfaces) {
  const Deck deck = read(kBrick8 + "*SURFACE,NAME=e\nE,S1\n*NSET,NSET=N\n1\n*NSET,NSET=N-SURFACE\n2\n" +
                         "*SURFACE,NAME=N,TYPE=NODE\n3\n");
  EXPECT_THAT(namesOf(deck.elementSets), UnorderedElementsAre("E", "e-SURFACE"));
  EXPECT_THAT(namesOf(deck.nodeSets), UnorderedElementsAre("e-SURFACE", "N", "N-SURFACE", "N-SURFACE-SURFACE"));
  EXPECT_THAT(deck.elementSets.at("E-SURFACE").labels, ElementsAre(1));
  EXPECT_THAT(deck.nodeSets.at("E-SURFACE").labels, ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(deck.nodeSets.at("N-SURFACE").labels, ElementsAre(2));
  EXPECT_THAT(deck.nodeSets.at("N-SURFACE-SURFACE").labels, ElementsAre(3));
}

TEST_F(DeckSurfacesTest, ASurfaceWithACommaInItsNameMayMeetASet) {
  const Deck deck = read(kBrick8 + "*NSET,NSET=\"a,b\"\n1\n*SURFACE,NAME=\"a,c\"\nE,S1\n");
  EXPECT_THAT(namesOf(deck.nodeSets), UnorderedElementsAre("a,b", "a,c-SURFACE"));
  EXPECT_EQ(deck.surfacePrintedAs("\"A")->names.front(), "a,c-SURFACE");
}

TEST_F(DeckSurfacesTest, SurfacesOfNodesAndOfElementsMayShareAName) {
  const Deck deck = read(kBrick8 + "*SURFACE,NAME=S,TYPE=NODE\n1\n*SURFACE,NAME=S\nE,S2\n");
  EXPECT_THAT(deck.nodeSets.at("S").labels, ElementsAre(1));
  EXPECT_THAT(deck.nodeSets.at("S-SURFACE").labels, ElementsAre(5, 6, 7, 8));
  EXPECT_THAT(deck.elementSets.at("S-SURFACE").labels, ElementsAre(1));
}

// Numbers as the solver has them: it prints the centre and the normal of such faces.
TEST_F(DeckSurfacesTest, FacesOfElementsThatMayBecomeSolidsAreKept) {
  const Deck deck = read(
      "*ELEMENT,TYPE=S4,ELSET=A\n1,1,2,3,4\n*ELEMENT,TYPE=CPS4,ELSET=B\n2,5,6,7,8\n*ELEMENT,TYPE=B31,ELSET=C\n3,1,2\n"
      "*ELEMENT,TYPE=C3D4,ELSET=D\n4,1,2,3,4\n*SURFACE,NAME=S\nA,SPOS\nA,SNEG\nA,S3\nB,S1\nB,SP\nC,S5\nD,S1\n");
  std::vector<std::pair<int, int>> faces;
  for (const DeckFace& face : deck.nodeSets.at("S").faces) faces.emplace_back(face.element, face.face);
  EXPECT_THAT(faces, ElementsAre(std::pair(1, 2), std::pair(1, 1), std::pair(1, 3), std::pair(2, 3), std::pair(2, 2),
                                 std::pair(3, 5)));
}

TEST_F(DeckSurfacesTest, ASurfaceThatIsOpenedAgainGrows) {
  const Deck deck = read(kBrick8 + "*SURFACE,NAME=Skin\nE,S1\n*SURFACE,NAME=SKIN\nE,S2\n");
  EXPECT_THAT(deck.nodeSets.at("SKIN").labels, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
  EXPECT_THAT(deck.nodeSets.at("SKIN").names, ElementsAre("Skin", "SKIN"));
}

TEST_F(DeckSurfacesTest, BricksHaveSixFaces) {
  const std::vector<std::vector<int>> faces = {{1, 2, 3, 4}, {5, 6, 7, 8}, {1, 2, 5, 6},
                                               {2, 3, 6, 7}, {3, 4, 7, 8}, {1, 4, 5, 8}};
  for (std::size_t i = 0; i < faces.size(); ++i) EXPECT_EQ(face(kBrick8, "S" + std::to_string(i + 1)), faces[i]);
  EXPECT_THAT(face(kBrick20, "S2"), ElementsAre(5, 6, 7, 8, 13, 14, 15, 16));
  EXPECT_THAT(face(kBrick20, "S4"), ElementsAre(2, 3, 6, 7, 10, 14, 18, 19));
  EXPECT_THAT(face(kBrick20, "S6"), ElementsAre(1, 4, 5, 8, 12, 16, 17, 20));
}

TEST_F(DeckSurfacesTest, WedgesHaveFiveFaces) {
  const std::vector<std::vector<int>> faces = {{1, 2, 3}, {4, 5, 6}, {1, 2, 4, 5}, {2, 3, 5, 6}, {1, 3, 4, 6}};
  for (std::size_t i = 0; i < faces.size(); ++i) EXPECT_EQ(face(kWedge6, "S" + std::to_string(i + 1)), faces[i]);
  EXPECT_THAT(face(kWedge15, "S1"), ElementsAre(1, 2, 3, 7, 8, 9));
  EXPECT_THAT(face(kWedge15, "S5"), ElementsAre(1, 3, 4, 6, 9, 12, 13, 15));
}

TEST_F(DeckSurfacesTest, TetrahedraHaveFourFaces) {
  EXPECT_THAT(face(kTetrahedron10, "S1"), ElementsAre(1, 2, 3, 5, 6, 7));
  EXPECT_THAT(face(kTetrahedron10, "S2"), ElementsAre(1, 2, 4, 5, 8, 9));
  EXPECT_THAT(face(kTetrahedron10, "S3"), ElementsAre(2, 3, 4, 6, 9, 10));
  EXPECT_THAT(face(kTetrahedron10, "S4"), ElementsAre(1, 3, 4, 7, 8, 10));
}

TEST_F(DeckSurfacesTest, ShellsHaveTwoSidesBeforeTheirEdges) {
  const std::string shell = "*ELEMENT,TYPE=S8R,ELSET=E\n1,1,2,3,4,5,6,7,8\n";
  for (const std::string side : {"S1", "S2", "SNEG", "SPOS"}) {
    EXPECT_THAT(face(shell, side), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8)) << side;
  }
  EXPECT_THAT(face(shell, "S3"), ElementsAre(1, 2, 5));
  EXPECT_THAT(face(shell, "S6"), ElementsAre(1, 4, 8));
  EXPECT_THAT(face("*ELEMENT,TYPE=S3\n1,1,2,3\n", "S5"), ElementsAre(1, 3));
}

TEST_F(DeckSurfacesTest, PlaneElementsHaveEdges) {
  EXPECT_THAT(face("*ELEMENT,TYPE=CPS4\n1,1,2,3,4\n", "S1"), ElementsAre(1, 2));
  EXPECT_THAT(face("*ELEMENT,TYPE=CAX8R\n1,1,2,3,4,5,6,7,8\n", "S4"), ElementsAre(1, 4, 8));
  EXPECT_THAT(face("*ELEMENT,TYPE=CPE6\n1,1,2,3,4,5,6\n", "S3"), ElementsAre(1, 3, 6));
  EXPECT_THAT(face("*ELEMENT,TYPE=CPS3\n1,1,2,3\n", "SN"), ElementsAre(1, 2, 3));
}

TEST_F(DeckSurfacesTest, FacesOfBeamsHaveAllTheirNodes) {
  EXPECT_THAT(face("*ELEMENT,TYPE=B32R\n1,1,2,3\n", "S5"), ElementsAre(1, 2, 3));
}

TEST_F(DeckSurfacesTest, FluidsHaveFacesToo) {
  EXPECT_THAT(face("*ELEMENT,TYPE=F3D6\n1,1,2,3,4,5,6\n", "S2"), ElementsAre(4, 5, 6));
}

TEST_F(DeckSurfacesTest, WhatIsNotThereIsNamed) {
  const Deck deck = read(kBrick8 + "*SURFACE,NAME=S\nE,S7\nNOTHING,S1\n1\n99,S1\n");
  EXPECT_THAT(deck.elementSets.at("S").labels, ElementsAre(1, 99));
  EXPECT_THAT(deck.nodeSets.at("S").labels, IsEmpty());
  EXPECT_THAT(warnings_,
              ElementsAre(EndsWith("job.inp:4: warning: the surface S has faces \"S7\" of elements without such faces"),
                          EndsWith("job.inp:5: warning: a surface takes in NOTHING, which is not a set"),
                          EndsWith("job.inp:6: warning: the surface S has faces \"\" of elements without such faces")));
  EXPECT_THAT(failureOf([&] { read("*SURFACE,TYPE=NODE\n1\n"); }), EndsWith("job.inp:1: error: *SURFACE has no name"));
}

}  // namespace
}  // namespace importers::calculix
