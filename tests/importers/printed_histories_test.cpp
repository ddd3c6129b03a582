// Rows of printed tables in, regions and samples out: one history for each node, element and set, whoever prints it.
#include "importers/calculix/dat/printed_histories.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "importers_test.h"
#include "odbstore/reader.h"

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HistoriesTest : public testing::Test {
 protected:
  // A table of step 1 in a frame, with its rows taken apart as the importer does it.
  void add(const std::string& title, FrameNumber frame, double value, const std::vector<DatRow>& rows,
           const std::string& part = "", bool isOfSection = false) {
    PrintedTable table;
    table.head = parseDatTitle(" " + title + " and time  0.1000000E+01");
    table.format = &datFormatOf(table.head);
    table.step = 1;
    table.frame = frame;
    table.part = part;
    table.isOfSection = isOfSection;
    if (isOfSection) table.head.set = "SUR";
    std::vector<DatValues> values(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      ASSERT_TRUE(readDatRow(*table.format, rows[i], values[i]));
      table.columns = datColumns(*table.format, table.head.heading, values[i].numbers.size()).value();
    }
    tables_.push_back({table, value, values});
  }

  // Writes them, and reads the outputs of each region: "region [set]: output, output".
  std::vector<std::string> written(const Deck& deck = {}) {
    const PrintedTables printed;
    PrintedHistories histories("job.dat", printed, 1000, deck, [](const base::Diagnostic&) {});
    for (const auto& [table, value, rows] : tables_) {
      EXPECT_TRUE(histories.takes(table));
      histories.start(table, value);
      for (const DatValues& row : rows) histories.add(row);
    }
    Outline outline;
    outline.steps.emplace_back().number = 1;
    outline.steps.back().name = "Step-1";
    const Choice choice = choose(outline, {}, "job.dat");
    odbstore::DatabaseWriter writer(path_, {});
    const std::set<FieldId> none;
    const WarningSink warn = [](const base::Diagnostic&) {};
    Sink sink(outline, choice, none, "job.dat", writer, warn);
    histories.deliver({{1, 0}}, sink);
    sink.finish();
    writer.finish();
    const auto step = odbstore::Reader(path_).step("Step-1");
    std::vector<std::string> found;
    for (const std::string& name : step->historyRegions()) {
      const odbstore::StoredHistoryRegion region = step->historyRegion(name);
      found.push_back(fmt::format("{} [{}]: {}", name, region.info.set, fmt::join(region.outputs, ", ")));
    }
    return found;
  }

  std::vector<float> samples(const std::string& region, const std::string& output) {
    return odbstore::Reader(path_).step("Step-1")->historySamples(region, output).numbers;
  }

  struct Added {
    PrintedTable table;
    double value;
    std::vector<DatValues> rows;
  };
  TemporaryDirectory directory_;
  std::string path_ = directory_.file("histories.odb");
  std::vector<Added> tables_;
};

TEST_F(HistoriesTest, ANodeOfTwoSetsHasOneHistory) {
  add("displacements (vx,vy,vz) for set TOP", 0, 0.5, {{"7", "1.", "2.", "3."}, {"8", "4.", "5.", "6."}});
  add("displacements (vx,vy,vz) for set EDGE", 0, 0.5, {{"7", "1.", "2.", "3."}, {"9", "7.", "8.", "9."}});
  add("forces (fx,fy,fz) for set EDGE", 0, 0.5, {{"7", "10.", "0.", "0."}});
  add("displacements (vx,vy,vz) for set TOP", 1, 1, {{"7", "2.", "2.", "3."}, {"8", "4.", "5.", "6."}});
  add("displacements (vx,vy,vz) for set EDGE", 1, 1, {{"7", "2.", "2.", "3."}, {"9", "7.", "8.", "9."}});
  EXPECT_THAT(written(), ElementsAre("Node 7 of TOP []: RF1, RF2, RF3, U1, U2, U3", "Node 8 of TOP []: U1, U2, U3",
                                     "Node 9 of EDGE []: U1, U2, U3"));
  EXPECT_THAT(samples("Node 7 of TOP", "U1"), ElementsAre(0.5F, 1, 1, 2));
}

TEST_F(HistoriesTest, PointsOfAnElementOfTwoSetsHaveOneHistoryToo) {
  add("equivalent plastic strain (elem, integ.pnt.,pe)for set A", 0, 1, {{"3", "1", ".5"}});
  add("equivalent plastic strain (elem, integ.pnt.,pe)for set B", 0, 1, {{"3", "1", ".5"}});
  EXPECT_THAT(written(), ElementsAre("Element 3 Int Point 1 of A []: PEEQ_3"));
  EXPECT_THAT(samples("Element 3 Int Point 1 of A", "PEEQ_3"), ElementsAre(1, .5F));
}

TEST_F(HistoriesTest, RowsInLocalAxesHaveHistoriesOfTheirOwn) {
  add("displacements (vx,vy,vz) for set TOP", 0, 1, {{"7", "1.", "2.", "3.", "L"}, {"8", "4.", "5.", "6."}});
  add("displacements (vx,vy,vz) for set TOP", 0, 1, {{"7", "7.", "8.", "9."}, {"8", "4.", "5.", "6."}});
  EXPECT_THAT(written(), ElementsAre("Node 7 of TOP []: U1, U1_LOCAL, U2, U2_LOCAL, U3, U3_LOCAL",
                                     "Node 8 of TOP []: U1, U2, U3"));
  EXPECT_THAT(samples("Node 7 of TOP", "U1_LOCAL"), ElementsAre(1, 1));
  EXPECT_THAT(samples("Node 7 of TOP", "U1"), ElementsAre(1, 7));
}

TEST_F(HistoriesTest, ASetThatIsCalledLikeANodeGetsAnotherLabel) {
  add("total force (fx,fy,fz) for set 5", 0, 1, {{"1.", "2.", "3."}});
  add("total force (fx,fy,fz) for set 6", 0, 1, {{"4.", "5.", "6."}});
  add("forces (fx,fy,fz) for set 5", 0, 1, {{"5", "7.", "8.", "9."}});
  EXPECT_THAT(written(),
              ElementsAre("Node 5 of 5 []: RF1, RF2, RF3", "Set 5 [5-SET]: RF1, RF2, RF3", "Set 6 [6]: RF1, RF2, RF3"));
}

TEST_F(HistoriesTest, LabelsOfSetsDoNotCollideWithEachOtherEither) {
  add("total force (fx,fy,fz) for set 5", 0, 1, {{"1.", "2.", "3."}});
  add("total force (fx,fy,fz) for set 5-SET", 0, 1, {{"4.", "5.", "6."}});
  add("forces (fx,fy,fz) for set 5", 0, 1, {{"5", "7.", "8.", "9."}});
  EXPECT_THAT(written(), ElementsAre("Node 5 of 5 []: RF1, RF2, RF3", "Set 5 [5-SET]: RF1, RF2, RF3",
                                     "Set 5-SET [5-SET-SET]: RF1, RF2, RF3"));
}

TEST_F(HistoriesTest, SetsHaveTheNamesOfTheDeck) {
  const Deck deck =
      readDeck(writeText(directory_, "job.inp", "*NODE\n1,0,0,0\n*NSET,NSET=\"a,b\"\n1\n*NSET,NSET=\"Top face\"\n1\n"),
               [](const base::Diagnostic&) {});
  add("total force (fx,fy,fz) for set \"A", 0, 1, {{"1.", "2.", "3."}});
  add("total force (fx,fy,fz) for set \"TOPFACE\"", 0, 1, {{"1.", "2.", "3."}});
  EXPECT_THAT(written(deck), ElementsAre("Set Top face [Top face]: RF1, RF2, RF3", "Set a,b [a,b]: RF1, RF2, RF3"));
}

TEST_F(HistoriesTest, PartsOfForcesHaveOutputsOfTheirOwn) {
  const std::string title = "area,  normal force (+ = tension) and shear force (size)";
  add(title, 0, 1, {{"4.", "-2.", "1."}}, "", true);
  add(title, 0, 1, {{"4.", "-2.", "0."}}, "CFN", true);
  EXPECT_THAT(written(), ElementsAre("Surface SUR [SUR]: SOAREA, SOAREA_CFN, SONF, SONF_CFN, SOSF, SOSF_CFN"));
  EXPECT_THAT(samples("Surface SUR", "SOSF_CFN"), ElementsAre(1, 0));
}

}  // namespace
}  // namespace importers::calculix
