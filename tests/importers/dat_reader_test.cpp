// Tables that a run prints: their heads, rows and ends.
#include "importers/calculix/dat/dat_reader.h"

#include <gmock/gmock.h>

#include "importers/calculix/dat/dat_formats.h"
#include "importers_test.h"

namespace importers::calculix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Optional;

struct Head {
  const char* line;
  const char* title;
  const char* set;
  double time;
};

// As the solver prints them, with all their oddities of blanks.
constexpr Head kHeads[] = {
    {" displacements (vx,vy,vz) for set TOP and time  0.1000000E+01", "displacements", "TOP", 1},
    {" temperatures for set NALL and time -0.2500000E+00", "temperatures", "NALL", -0.25},
    {" heat flux (elem, integ.pnt.,qx,qy,qz) for setEALL and time  0.1000000E+01", "heat flux", "EALL", 1},
    {" equivalent plastic strain (elem, integ.pnt.,pe)for set EALL and time  0.5000000E+00",
     "equivalent plastic strain", "EALL", 0.5},
    {" relative contact displacement (slave node,normal,tang1,tang2) for all contact elements and time 0.1000000E+01",
     "relative contact displacement", "", 1},
    {" contact print energy (slave element+face,energy)for all contact elements and time 0.1000000E+01",
     "contact print energy", "", 1},
    {" total contact spring energy for time  0.1000000E+01", "total contact spring energy", "", 1},
    {" total mass moment of inertia about the center ofgravity (xx,yy,zz,xy,xz,yz) for set E and time  0.2000000E+01",
     "total mass moment of inertia about the center ofgravity", "E", 2},
    {" statistics for surface set SUR and time  0.1000000E+01", "statistics", "SUR", 1},
    {" statistics for slave set SLA, master set MAS and time  0.1000000E+01", "statistics", "SLA, MAS", 1},
    {" centrifugal force(element,omega square) for set EALL and time  0.1000000E+01", "centrifugal force", "EALL", 1},
    {" forces (fx,fy,fz) for set FORTIME and time  0.1000000E+01", "forces", "FORTIME", 1},
};

TEST(DatTitles, TellQuantitySetAndTime) {
  for (const Head& head : kHeads) {
    const DatTable table = parseDatTitle(head.line);
    EXPECT_EQ(table.title, head.title) << head.line;
    EXPECT_EQ(table.set, head.set) << head.line;
    EXPECT_THAT(table.time, Optional(head.time)) << head.line;
    EXPECT_NE(datFormatOf(table).rows, DatRows::ignored) << head.line;
  }
}

TEST(DatTitles, MayBeSpacedOutAndEndInANumber) {
  const DatTable mode = parseDatTitle("                    E I G E N V A L U E    N U M B E R     3");
  EXPECT_EQ(mode.title, "eigenvalue number");
  EXPECT_THAT(mode.number, Optional(3));
  const DatTable factors = parseDatTitle(
      "P A R T I C I P A T I O N   F A C T O R S   F O R   F R E Q U E N C Y    0.1200000000000E+05 (CYCLES/TIME)");
  EXPECT_EQ(factors.title, "participation factors for frequency");
  EXPECT_THAT(factors.number, Optional(12000));
  EXPECT_EQ(parseDatTitle("     T O T A L   E F F E C T I V E   M A S S").title, "total effective mass");
}

TEST(DatTitles, OfSectionsHaveNeitherSetNorTime) {
  const DatTable table = parseDatTitle("   total surface force (fx,fy,fz) and moment about the origin(mx,my,mz)");
  EXPECT_EQ(table.title, "total surface force");
  EXPECT_EQ(table.time, std::nullopt);
  EXPECT_EQ(datFormatOf(table).rows, DatRows::total);
}

TEST(DatTitles, OfContactTellNodesFromFaces) {
  const DatTable nodes =
      parseDatTitle(" contact stress (slave node,press,tang1,tang2) for all contact elements and time 1.");
  const DatTable faces =
      parseDatTitle(" contact stress (slave element+face,press,tang1,tang2) for all contact elements and time 1.");
  EXPECT_EQ(datFormatOf(nodes).rows, DatRows::contactNode);
  EXPECT_EQ(datFormatOf(faces).rows, DatRows::contactFace);
}

// The rows of all tables of a text.
class DatReaderTest : public testing::Test {
 protected:
  std::vector<std::string> read(const std::string& text) {
    DatReader reader(writeText(directory_, "job.dat", text));
    std::vector<std::string> found;
    while (const std::optional<DatTable> table = reader.next()) {
      found.push_back(table->title + " line " + std::to_string(table->line));
      DatRow row;
      while (reader.nextRow(row)) {
        std::string words;
        for (const std::string_view word : row) words += "[" + std::string(word) + "]";
        found.push_back(words);
      }
    }
    isCutOff_ = reader.isCutOff();
    return found;
  }

  TemporaryDirectory directory_;
  bool isCutOff_ = false;
};

constexpr const char* kTwoTables =
    "\n displacements (vx,vy,vz) for set TOP and time  0.1000000E+01\n\n"
    "         7  1.000000E+00 -2.000000E+00 5.717277-124 L\n"
    "         9  0.000000E+00  0.000000E+00  0.000000E+00\n\n"
    " temperatures for set TOP and time  0.1000000E+01\n\n"
    "         7  2.500000E+01\n";

TEST_F(DatReaderTest, TablesComeWithTheirRows) {
  EXPECT_THAT(read(kTwoTables),
              ElementsAre("displacements line 2", "[7][1.000000E+00][-2.000000E+00][5.717277-124][L]",
                          "[9][0.000000E+00][0.000000E+00][0.000000E+00]", "temperatures line 7", "[7][2.500000E+01]"));
  EXPECT_FALSE(isCutOff_);
}

TEST_F(DatReaderTest, LinesBetweenASpacedTitleAndItsRowsHeadColumns) {
  EXPECT_THAT(read("     B U C K L I N G   F A C T O R   O U T P U T\n\n MODE NO       BUCKLING\n"
                   "                FACTOR\n\n      1   0.4815456E+02\n      2   0.1063175E+03\n"),
              ElementsAre("buckling factor output line 1", "[1][0.4815456E+02]", "[2][0.1063175E+03]"));
}

TEST_F(DatReaderTest, AMarkIsFollowedByTheNextTitle) {
  EXPECT_THAT(read("                    E I G E N V A L U E    N U M B E R     1\n\n\n" + std::string(kTwoTables)),
              testing::Contains("displacements line 5"));
}

TEST_F(DatReaderTest, ALastLineWithoutItsEndIsNoRow) {
  const std::string text = kTwoTables;
  EXPECT_THAT(read(text.substr(0, text.size() - 4)), testing::Contains("temperatures line 7"));
  EXPECT_TRUE(isCutOff_);
}

DatValues valuesOf(const char* title, DatRow row) {
  DatTable table;
  table.title = title;
  DatValues values;
  EXPECT_TRUE(readDatRow(datFormatOf(table), row, values)) << title;
  return values;
}

TEST(DatRowsTest, AreTakenApartByTheirTable) {
  const DatValues point = valuesOf("stresses", {"10", "3", "1.", "2.", "3.", "4.", "5.", "6.", "17"});
  EXPECT_THAT(point.labels, ElementsAre(10, 3));
  EXPECT_THAT(point.numbers, ElementsAre(1, 2, 3, 4, 5, 6)) << "an orientation may be named by a number";
  EXPECT_TRUE(point.isLocal);
  const DatValues local = valuesOf("displacements", {"7", "1.", "-2.", "5.5-124", "L"});
  EXPECT_THAT(local.labels, ElementsAre(7, 0));
  EXPECT_THAT(local.numbers, ElementsAre(1, -2, 5.5e-124));
  EXPECT_TRUE(local.isLocal);
  EXPECT_FALSE(valuesOf("displacements", {"7", "1.", "-2.", "3."}).isLocal);
  EXPECT_THAT(valuesOf("internal state variables", {"1", "2", "1.", "2."}).numbers, ElementsAre(1, 2));
  const DatValues mode = valuesOf("eigenvalue output", {"2", "4.", "2.", ".3", "0."});
  EXPECT_THAT(mode.labels, ElementsAre(2, 0));
  const DatValues cyclic = valuesOf("eigenvalue output", {"4", "2", "4.", "2.", ".3", "0."});
  EXPECT_THAT(cyclic.labels, ElementsAre(2, 4)) << "the nodal diameter comes first";
  EXPECT_TRUE(cyclic.hasDiameter);
}

TEST(DatRowsTest, MaySayWithTheirHeadingWhatTheirColumnsAre) {
  const DatTable surface =
      parseDatTitle("   area, normal force (+ = tension), shear force (size), torque and bending moment (size)");
  const DatTable contact = parseDatTitle("   area,  normal force (+ = tension) and shear force (size)");
  const DatFormat& format = datFormatOf(contact);
  EXPECT_EQ(&format, &datFormatOf(surface));
  EXPECT_THAT(datColumns(format, surface.heading, 5), Optional(ElementsAre(0, 1, 2, 3, 4)));
  EXPECT_THAT(datColumns(format, contact.heading, 3), Optional(ElementsAre(0, 1, 2)));
  EXPECT_EQ(datColumns(format, contact.heading, 5), std::nullopt);
  EXPECT_THAT(datColumns(format, "area, torque and normal force", 3), Optional(ElementsAre(0, 3, 1)));
}

TEST(DatRowsTest, OfComplexModesLackTheEigenvalue) {
  DatTable table;
  table.title = "eigenvalue output";
  const DatFormat& format = datFormatOf(table);
  EXPECT_THAT(datColumns(format, "", 4), Optional(ElementsAre(0, 1, 2, 3)));
  EXPECT_THAT(datColumns(format, "", 3), Optional(ElementsAre(1, 2, 3)));
  EXPECT_EQ(format.outputName(2), "EIGFREQ");
}

TEST(DatRowsTest, MayBeRemarksOnOtherRows) {
  EXPECT_TRUE(isRemark({"TOTAL", "1.", "2."}));
  EXPECT_TRUE(isRemark({"tra", "1.", "2."}));
  EXPECT_FALSE(isRemark({"NaN", "1."}));
  EXPECT_FALSE(isRemark({"12", "1."}));
  EXPECT_FALSE(isRemark({"*****", "1."}));
}

TEST(DatRowsTest, ThatAreDamagedAreRefused) {
  DatTable table;
  table.title = "stresses";
  DatValues values;
  const DatFormat& format = datFormatOf(table);
  EXPECT_FALSE(readDatRow(format, {"10", "3", "1.", "2.", "3.", "4.", "5."}, values));
  EXPECT_FALSE(readDatRow(format, {"10", "x", "1.", "2.", "3.", "4.", "5.", "6."}, values));
  EXPECT_FALSE(readDatRow(format, {"10"}, values));
  EXPECT_FALSE(readDatRow(format, {"1x", "3", "1.", "2.", "3.", "4.", "5.", "6."}, values));
  EXPECT_FALSE(readDatRow(format, {"10", "3", "1.", "2.", "3.", "*****", "5.", "6."}, values));
  EXPECT_FALSE(readDatRow(format, {"10", "3", "1.", "2.", "3.", "4.", "5.", "6.", "OR1", "7."}, values));
  table.title = "buckling factor output";
  EXPECT_FALSE(readDatRow(datFormatOf(table), {"2", "4.", "2."}, values));
}

}  // namespace
}  // namespace importers::calculix
