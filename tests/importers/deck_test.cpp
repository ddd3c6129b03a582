#include "importers/calculix/deck/deck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "importers/calculix/deck/deck_set_names.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

class DeckTest : public testing::Test {
 protected:
  Deck read(const std::string& text, bool isStrict = false) {
    const WarningSink warn = [this](const base::Diagnostic& said) { warnings_.push_back(base::textOf(said)); };
    return readDeck(writeText(directory_, "job.inp", text), warn, {DeckDetail::sets, isStrict});
  }

  std::string failure(const std::string& text) {
    return failureOf([&] { read(text); });
  }

  static std::vector<int> nodesOf(const Deck& deck, const std::string& set) { return deck.nodeSets.at(set).labels; }
  static std::vector<int> elementsOf(const Deck& deck, const std::string& set) {
    return deck.elementSets.at(set).labels;
  }

  TemporaryDirectory directory_;
  std::vector<std::string> warnings_;
};

TEST_F(DeckTest, ListsLabelsInOrderOnce) {
  const Deck deck = read("*NSET,NSET=A\n3, 1,2,\n 2\n*ELSET, ELSET=A\n9\n");
  EXPECT_THAT(nodesOf(deck, "A"), ElementsAre(1, 2, 3));
  EXPECT_THAT(elementsOf(deck, "A"), ElementsAre(9));
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(DeckTest, GeneratesRanges) {
  const Deck deck = read("*NSET,NSET=A,GENERATE\n1,9,4\n20,22\n30\n");
  EXPECT_THAT(nodesOf(deck, "A"), ElementsAre(1, 5, 9, 20, 21, 22, 30));
}

TEST_F(DeckTest, KeywordsAndNamesAreTheSameInAnyCase) {
  const Deck deck = read("*nset, nset=Top\n1\n*Nset,NSET=TOP\n2\n* NSET , Nset = both\ntop, 3\n");
  EXPECT_EQ(deck.nodeSets.at("TOP").names.front(), "Top");
  EXPECT_THAT(nodesOf(deck, "TOP"), ElementsAre(1, 2));
  EXPECT_THAT(nodesOf(deck, "BOTH"), ElementsAre(1, 2, 3));
}

TEST_F(DeckTest, EverySpellingThatOpensASetIsKept) {
  const Deck deck = read(
      "*NODE,NSET=All\n1,0,0,0\n*NODE\n2,0,0,0\n3,0,0,0\n4,0,0,0\n"
      "*NSET,NSET=ALL\n2\n*NSET,NSET=All\n3\n*NSET,NSET=a ll\n4\n"
      "*NSET,NSET=OTHER\nall\n*ELEMENT,TYPE=T3D2,ELSET=all\n1,1,2\n");
  EXPECT_THAT(deck.nodeSets.at("ALL").names, ElementsAre("All", "ALL", "a ll"));
  EXPECT_THAT(nodesOf(deck, "ALL"), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(deck.elementSets.at("ALL").names, ElementsAre("all"));
}

TEST_F(DeckTest, TwoEncodingsOfALetterAreOneName) {
  const Deck deck = read("*NSET,NSET=Tr\xE4ger\n1\n*NSET,NSET=Tr\xC3\xA4ger\n2\n");
  ASSERT_EQ(deck.nodeSets.size(), 1U);
  EXPECT_THAT(deck.nodeSets.begin()->second.names, ElementsAre("Tr\xC3\xA4ger"));
}

// As the solver has it: it takes quotes for a part of the name, and the name ends at a comma, quoted or not.
TEST_F(DeckTest, NamesMayHaveQuotesAndBlanks) {
  const Deck deck = read(
      "*NSET,NSET=\"Top, left face\"\n1\n*NSET,NSET=top face\n2\n*NSET,NSET=ALL\n\"top, LEFT face\",TOPFACE\n"
      "*NSET,NSET=\"Top face\"\n3\n*NSET,NSET=\"top,right\"\n4\n");
  EXPECT_THAT(deck.nodeSets.at("\"TOP").names, ElementsAre("Top, left face", "top,right"));
  EXPECT_THAT(nodesOf(deck, "\"TOP"), ElementsAre(1, 4));
  EXPECT_THAT(deck.nodeSets.at("TOPFACE").names, ElementsAre("top face"));
  EXPECT_THAT(deck.nodeSets.at("\"TOPFACE\"").names, ElementsAre("Top face"));
  EXPECT_THAT(nodesOf(deck, "ALL"), ElementsAre(1, 2));
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(DeckTest, AQuoteThatNothingClosesQuotesNothing) {
  const Deck deck = read("*NSET,NSET=\"A,GENERATE\n1,3\n");
  EXPECT_THAT(nodesOf(deck, "\"A"), ElementsAre(1, 2, 3));
  EXPECT_THAT(deck.nodeSets.at("\"A").names, ElementsAre("A"));
}

// The names as the solver has printed them of such a deck.
TEST_F(DeckTest, FindsSetsAsTheSolverPrintsTheirNames) {
  const Deck deck = read(
      "*ELEMENT,TYPE=C3D8,ELSET=E\n7,1,2,3,4,5,6,7,8\n*NSET,NSET=\"a b\"\n1\n*NSET,NSET=\"a,b\"\n3\n"
      "*NSET,NSET=\"Lo ng\"\n5\n*NSET,NSET=Lo ng\n6\n*ELSET,ELSET=\"e,1\"\n7\n*ELSET,ELSET=Lo-ng\n7\n"
      "*SURFACE,NAME=Sur f\nE,S1\n*SURFACE,NAME=E\nE,S2\n");
  const auto nameOf = [](const DeckSet* set) { return set == nullptr ? "none" : set->names.front(); };
  const auto ofNodes = [&](const char* name) { return nameOf(deck.setPrintedAs(name, odbstore::SetKind::node)); };
  EXPECT_EQ(ofNodes("\"AB\""), "a b");
  EXPECT_EQ(ofNodes("\"A"), "a,b");
  EXPECT_EQ(ofNodes("LONG"), "Lo ng");
  EXPECT_THAT(deck.setPrintedAs("LONG", odbstore::SetKind::node)->labels, ElementsAre(6));
  EXPECT_THAT(deck.setPrintedAs("\"LONG\"", odbstore::SetKind::node)->labels, ElementsAre(5));
  EXPECT_EQ(ofNodes("\"E"), "e,1") << "where there is none of the kind, one of the other";
  EXPECT_EQ(ofNodes("AB"), "none");
  EXPECT_EQ(nameOf(deck.surfacePrintedAs("SURF")), "Sur f");
  EXPECT_EQ(nameOf(deck.surfacePrintedAs("E")), "E-SURFACE");
  EXPECT_EQ(nameOf(deck.surfacePrintedAs("LONG")), "none");
}

TEST_F(DeckTest, PrintedSetsHaveTheNamesOfTheDatabase) {
  const Deck deck = read(
      "*ELEMENT,TYPE=C3D8,ELSET=Both\n7,1,2,3,4,5,6,7,8\n*NSET,NSET=BOTH\n1\n*NSET,NSET=both\n2\n*ELSET,ELSET=both\n7\n"
      "*NSET,NSET=\"Lo ng\"\n5\n*NSET,NSET=Lo ng\n6\n*SURFACE,NAME=Both\nBOTH,S1\n*SURFACE,NAME=P,TYPE=NODE\n1\n");
  const PrintedSetNames names(deck);
  using odbstore::SetKind;
  EXPECT_EQ(names.nameOf("BOTH", SetKind::element), "Both");
  EXPECT_EQ(names.nameOf("BOTH", SetKind::node), "BOTH") << "its spellings are BOTH and both-NODES";
  EXPECT_EQ(names.nameOf("\"LONG\"", SetKind::node), "Lo ng");
  EXPECT_EQ(names.nameOf("LONG", SetKind::node), "Lo ng-2");
  EXPECT_EQ(names.nameOf("\"OTHER", SetKind::node), "OTHER") << "the deck does not have it";
  EXPECT_EQ(names.nameOfSurface("BOTH"), "Both-SURFACE");
  EXPECT_EQ(names.nameOfSurface("P"), "P-NODES");
  EXPECT_EQ(names.nameOfSurface("\"NONE\""), "NONE");
}

TEST_F(DeckTest, SetsHaveTheOrderOfTheirFirstMention) {
  const Deck deck = read(
      "*NODE,NSET=Z\n1,0,0,0\n2,0,0,0\n3,0,0,0\n*SURFACE,NAME=S\nB,S1\n*ELEMENT,TYPE=S3,ELSET=B\n1,1,2,3\n"
      "*NSET,NSET=a\n1\n*ELSET,ELSET=A\n1\n*NSET,NSET=z\n2\n*SURFACE,NAME=N,TYPE=NODE\na\n");
  std::vector<std::string> sets;
  for (const DeckSet* set : deck.setsInOrder()) {
    sets.push_back((set->kind == odbstore::SetKind::node ? "nodes " : "elements ") + set->names.front() +
                   (set->isOfSurface() ? " of surface" : "") + ":" + std::to_string(set->place.line));
  }
  EXPECT_THAT(sets, ElementsAre("nodes Z:1", "elements S of surface:5", "nodes S of surface:5", "elements B:7",
                                "nodes a:9", "elements A:11", "nodes N of surface:15"));
}

TEST_F(DeckTest, AKeywordGoesOnBehindAComma) {
  const Deck deck = read("*NSET,\n** why not\n  NSET=A,\nGENERATE\n1,3\n");
  EXPECT_THAT(nodesOf(deck, "A"), ElementsAre(1, 2, 3));
}

TEST_F(DeckTest, NodesAndElementsFillSetsAsTheyAreDefined) {
  const Deck deck = read(
      "*NODE,NSET=ALL\n1, 0., 0., 0.\n2, 1., 0., 0.\n*NODE\n3,0,0,0\n"
      "*ELEMENT,TYPE=T3D2,ELSET=BARS\n10,1,2\n20,2,3\n");
  EXPECT_THAT(nodesOf(deck, "ALL"), ElementsAre(1, 2));
  EXPECT_THAT(elementsOf(deck, "BARS"), ElementsAre(10, 20));
  EXPECT_THAT(deck.mesh.elementTypes, ElementsAre("T3D2"));
  EXPECT_THAT(deck.mesh.elementLabels, ElementsAre(10, 20));
  EXPECT_THAT(deck.mesh.typeOfElement, ElementsAre(0, 0));
}

TEST_F(DeckTest, ElementsGoOnOverLines) {
  const Deck deck = read(
      "*ELEMENT,TYPE=c3d20r,ELSET=E\n"
      "1,101,102,103,104,105,106,107,108,109,110,\n111,112,113,114,115,116,117,118,119,120\n"
      "2,201,202,203,204,205,206,207,208,209,210\n211,212,213,214,215,216,217,218,219,220,\n"
      "*ELEMENT,TYPE=C3D8,ELSET=E\n3,\n1,2,3,4,\n5,6,7,8\n4,1,2,3,4,5,6,7,8\n");
  EXPECT_THAT(elementsOf(deck, "E"), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(deck.mesh.elementTypes, ElementsAre("C3D20R", "C3D8"));
  EXPECT_THAT(deck.mesh.typeOfElement, ElementsAre(0, 0, 1, 1));
}

TEST_F(DeckTest, ElementsOfUnknownTypesGoOnBehindACommaOnly) {
  const Deck deck = read("*ELEMENT,TYPE=XYZ,ELSET=E\n1,101,\n102\n2,201,202\n3,301\n");
  EXPECT_THAT(elementsOf(deck, "E"), ElementsAre(1, 2, 3));
}

TEST_F(DeckTest, ElementsOfTheUserHaveAsManyNodesAsTheyDeclare) {
  const Deck deck = read("*USER ELEMENT,TYPE=U1,NODES=3\n*ELEMENT,TYPE=U1,ELSET=E\n1,101,102\n103\n2,201,202,203\n");
  EXPECT_THAT(elementsOf(deck, "E"), ElementsAre(1, 2));
}

TEST_F(DeckTest, OtherKeywordsTakeTheirDataWithThem) {
  const Deck deck =
      read("*NSET,NSET=A\n1\n*NODE FILE,NSET=A\nU,S\n*BOUNDARY\nA,1,3\n*NODE PRINT,NSET=A\nU\n*ELEMENT OUTPUT\nS\n");
  EXPECT_THAT(nodesOf(deck, "A"), ElementsAre(1));
  EXPECT_EQ(deck.nodeSets.size(), 1U);
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(DeckTest, IncludedFilesBelongToTheDeck) {
  writeText(directory_, "sets of mine.inc", "5\n*NSET,NSET=B\n6\n");
  std::filesystem::create_directory(directory_.file("mesh"));
  writeText(directory_, "mesh/mesh.inc", "*INCLUDE,INPUT=inner.inc\n*INCLUDE,INPUT=beside.inc\n");
  writeText(directory_, "mesh/inner.inc", "*NSET,NSET=INNER\n7\n");
  writeText(directory_, "beside.inc", "*NSET,NSET=BESIDE\n8\n");
  const Deck deck = read("*NSET,NSET=A\n*include, input=\"sets of mine.inc\"\n*INCLUDE,INPUT=mesh/mesh.inc\n");
  EXPECT_THAT(nodesOf(deck, "A"), ElementsAre(5));
  EXPECT_THAT(nodesOf(deck, "B"), ElementsAre(6));
  EXPECT_THAT(nodesOf(deck, "INNER"), ElementsAre(7));
  EXPECT_THAT(nodesOf(deck, "BESIDE"), ElementsAre(8));
}

TEST_F(DeckTest, AnIncludedFileThatCannotBeReadIsAnErrorOfTheLine) {
  std::filesystem::create_directory(directory_.file("folder"));
  std::filesystem::create_symlink("/proc/self/mem", directory_.file("memory"));
  EXPECT_THAT(failure("*HEADING\n\n*INCLUDE,INPUT=folder\n"),
              EndsWith("job.inp:3: error: the included file folder: is not a regular file"));
  EXPECT_THAT(failure("*INCLUDE,INPUT=memory\n"),
              EndsWith("job.inp:1: error: the included file memory: Input/output error"));
  writeText(directory_, "bad.inc", "*NSET,NSET=A\nx1\n1.5.1\n");
  EXPECT_THAT(failure("*INCLUDE,INPUT=bad.inc\n"), testing::HasSubstr("bad.inc:3: error: "));
}

TEST_F(DeckTest, AFileMayBeIncludedTwice) {
  writeText(directory_, "part.inc", "5\n");
  const Deck deck = read("*NSET,NSET=A\n*INCLUDE,INPUT=part.inc\n*NSET,NSET=B\n*INCLUDE,INPUT=part.inc\n");
  EXPECT_THAT(nodesOf(deck, "A"), ElementsAre(5));
  EXPECT_THAT(nodesOf(deck, "B"), ElementsAre(5));
}

TEST_F(DeckTest, HeadingAndStepsMayHaveText) {
  const Deck deck = read(
      "*HEADING\nA bracket\nof steel\n*STEP,NLGEOM\npull the lug\n*STATIC\n0.1,1.\n*END STEP\n"
      "*STEP\n** no text\n*FREQUENCY\n10\n*END STEP\n");
  EXPECT_EQ(deck.heading, "A bracket");
  EXPECT_THAT(deck.stepTitles, ElementsAre("pull the lug", ""));
}

TEST_F(DeckTest, CommentsBlankLinesAndCarriageReturnsDoNotMatter) {
  const Deck deck = read("** *NSET,NSET=NO\r\n*NSET,NSET=A\r\n\r\n  1 \r\n** 2\r\n   ** 3\r\n4\r\n");
  EXPECT_THAT(nodesOf(deck, "A"), ElementsAre(1, 4));
  EXPECT_EQ(deck.nodeSets.size(), 1U);
}

TEST_F(DeckTest, NamesOfAnyEncodingBecomeUtf8) {
  EXPECT_EQ(read("*NSET,NSET=Tr\xE4ger\n1\n").nodeSets.begin()->second.names.front(), "Tr\xC3\xA4ger");
}

TEST_F(DeckTest, AnEmptySetIsASet) {
  const Deck deck = read("*NSET,NSET=EMPTY\n*ELSET,ELSET=LAST\n");
  EXPECT_THAT(nodesOf(deck, "EMPTY"), IsEmpty());
  EXPECT_THAT(elementsOf(deck, "LAST"), IsEmpty());
}

TEST_F(DeckTest, ASetThatTakesInAnUnknownOneIsNamed) {
  const Deck deck = read("*ELSET,ELSET=E\n1\n*NSET,NSET=A\n1,E\n2\n");
  EXPECT_THAT(nodesOf(deck, "A"), ElementsAre(1, 2));
  EXPECT_THAT(warnings_, ElementsAre(EndsWith("job.inp:4: warning: the set A takes in E, which is not a set yet")));
}

TEST_F(DeckTest, ASetRemembersWhereItWasNamedFirst) {
  EXPECT_THAT(base::textOf(read("*HEADING\n\n*NSET,NSET=A\n1\n*NSET,NSET=A\n2\n").nodeSets.at("A").place),
              EndsWith("job.inp:3"));
}

TEST_F(DeckTest, DamagedNumbersAreNamedWithTheirLine) {
  EXPECT_THAT(failure("*NODE,NSET=A\n1,0,0\n1x,0,0\n"), EndsWith("job.inp:3: error: \"1x\" is not a label"));
  EXPECT_THAT(failure("*ELEMENT,TYPE=T3D2\n1.5,1,2\n"), EndsWith("job.inp:2: error: \"1.5\" is not a label"));
  EXPECT_THAT(failure("*NSET,NSET=A\n1,2\n3,4x\n"), EndsWith("job.inp:3: error: \"4x\" is neither a label nor a set"));
  EXPECT_THAT(failure("*NSET,NSET=A\n99999999999\n"),
              EndsWith("job.inp:2: error: \"99999999999\" is neither a label nor a set"));
  EXPECT_THAT(failure("*NSET,NSET=A,GENERATE\n1,abc\n"), EndsWith("job.inp:2: error: \"abc\" is not a label"));
  EXPECT_THAT(failure("*USER ELEMENT,TYPE=U1,NODES=three\n"),
              EndsWith("job.inp:1: error: \"three\" is not a number of nodes"));
}

TEST_F(DeckTest, RangesThatMakeNoSenseAreRefused) {
  EXPECT_THAT(failure("*NSET,NSET=A,GENERATE\n9,1\n"), EndsWith(":2: error: GENERATE cannot run from 9 down to 1"));
  EXPECT_THAT(failure("*NSET,NSET=A,GENERATE\n1,9,0\n"),
              EndsWith(":2: error: the increment of GENERATE must be positive"));
  EXPECT_THAT(failure("*NSET,NSET=A,GENERATE\n1,9,-1\n"), HasSubstr("must be positive"));
  EXPECT_THAT(failure("*NSET,NSET=A,GENERATE\n1,2,3,4\n"), HasSubstr("takes a first label, a last label"));
}

TEST_F(DeckTest, KeywordsThatMissSomethingAreRefused) {
  EXPECT_THAT(failure("*NSET\n1\n"), EndsWith("job.inp:1: error: *NSET names no set"));
  EXPECT_THAT(failure("\n*ELSET,ELSET=\n1\n"), EndsWith("job.inp:2: error: *ELSET names no set"));
  EXPECT_THAT(failure("*NSET,NSET=\" \"\n1\n"), EndsWith("job.inp:1: error: the set has no name"));
  EXPECT_THAT(failure("*ELEMENT,ELSET=E\n1,2\n"), EndsWith("job.inp:1: error: *ELEMENT names no type"));
  EXPECT_THAT(failure("*INCLUDE\n"), EndsWith("job.inp:1: error: *INCLUDE names no file"));
}

TEST_F(DeckTest, AnIncludedFileThatIsMissingIsAWarning) {
  const Deck deck = read("*HEADING\n*INCLUDE,INPUT=none.inc\n*NSET,NSET=A\n1\n");
  EXPECT_THAT(warnings_, ElementsAre(EndsWith("job.inp:2: warning: the included file none.inc does not exist")));
  EXPECT_THAT(nodesOf(deck, "A"), ElementsAre(1));
  EXPECT_FALSE(deck.mesh.isWhole());
  EXPECT_THAT(failureOf([&] { read("*HEADING\n*INCLUDE,INPUT=none.inc\n", true); }),
              EndsWith("job.inp:2: error: the included file none.inc does not exist"));
  EXPECT_THAT(failureOf([&] { read("*INCLUDE,INPUT=" + std::string(5000, 'x') + "\n", true); }),
              testing::ContainsRegex("job.inp:1: error: the included file x+ does not exist"))
      << "a name that is longer than any";
}

TEST_F(DeckTest, FilesThatIncludeThemselvesAreRefused) {
  EXPECT_THAT(failure("*INCLUDE,INPUT=job.inp\n"), EndsWith("job.inp:1: error: job.inp includes itself"));
  writeText(directory_, "a.inc", "*INCLUDE,INPUT=b.inc\n");
  writeText(directory_, "b.inc", "** again\n*INCLUDE,INPUT=./a.inc\n");
  EXPECT_THAT(failure("*INCLUDE,INPUT=a.inc\n"), EndsWith("b.inc:2: error: ./a.inc includes itself"));
}

// The solver was started above the deck, as "ccx -i sub/job".
TEST_F(DeckTest, IncludesMayBeRelativeToADirectoryAboveTheDeck) {
  std::filesystem::create_directories(directory_.file("run/sub"));
  writeText(directory_, "run/sub/mesh.inc", "*NSET,NSET=A\n5\n*INCLUDE,INPUT=sub/more.inc\n");
  writeText(directory_, "run/sub/more.inc", "*NSET,NSET=B\n6\n");
  writeText(directory_, "run/sub/job.inp", "*INCLUDE,INPUT=sub/mesh.inc\n");
  const Deck deck =
      readDeck(directory_.file("run/sub/job.inp"), [](const base::Diagnostic&) {}, {DeckDetail::sets, true});
  EXPECT_THAT(nodesOf(deck, "A"), ElementsAre(5));
  EXPECT_THAT(nodesOf(deck, "B"), ElementsAre(6));
}

TEST_F(DeckTest, AFileBesideTheOneThatNamesItComesFirst) {
  std::filesystem::create_directories(directory_.file("sub"));
  writeText(directory_, "a.inc", "*NSET,NSET=A\n1\n");
  writeText(directory_, "sub/a.inc", "*NSET,NSET=A\n2\n");
  writeText(directory_, "sub/b.inc", "*INCLUDE,INPUT=a.inc\n");
  EXPECT_THAT(nodesOf(read("*INCLUDE,INPUT=sub/b.inc\n"), "A"), ElementsAre(2));
}

TEST_F(DeckTest, AChainOfIncludesHasAnEnd) {
  for (int i = 1; i <= 50; ++i) {
    writeText(directory_, std::to_string(i), "*INCLUDE,INPUT=" + std::to_string(i + 1) + "\n");
  }
  EXPECT_THAT(failure("*INCLUDE,INPUT=1\n"), HasSubstr("files include each other too deeply"));
}

TEST_F(DeckTest, DamageInAnIncludedFileIsNamedThere) {
  writeText(directory_, "sets.inc", "*NSET,NSET=A\n1,\n-\n1.\n");
  EXPECT_THAT(failure("*INCLUDE,INPUT=sets.inc\n"), EndsWith("sets.inc:4: error: \"1.\" is neither a label nor a set"));
}

TEST_F(DeckTest, SectionForcesAreWrittenFromTheStepOnThatAsksForThem) {
  const std::string stresses = "*STEP\n*EL FILE\nS\n*END STEP\n";
  EXPECT_EQ(read(stresses + stresses).sectionForcesFrom, 0);
  EXPECT_EQ(read("*STEP\n*EL FILE, Section Forces\nS\n").sectionForcesFrom, 1);
  EXPECT_EQ(read(stresses + "*STEP\n*ELEMENT OUTPUT,SECTION FORCES\nS\n" + stresses).sectionForcesFrom, 2);
}

TEST_F(DeckTest, AFileThatIsNoTextIsRefused) {
  EXPECT_THAT(failure(std::string("*HEADING\n\x89HDF\r\n\0\0\0\n", 18)), EndsWith("job.inp:3: error: not a text file"));
}

}  // namespace
}  // namespace importers::calculix
