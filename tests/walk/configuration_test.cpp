#include <fstream>
#include <limits>

#include "driver/read_configuration.h"
#include "result/configuration_keywords.h"
#include "support/temporary_directory.h"
#include "walk_test.h"

namespace {

class ConfigurationTest : public WalkTest {
 protected:
  ExtractionSwitches read(const std::string& text) {
    const std::string path = directory_.file("config.txt");
    std::ofstream(path) << text;
    ExtractionSwitches switches;
    readConfiguration(path, switches);
    return switches;
  }

  TemporaryDirectory directory_;
};

TEST_F(ConfigurationTest, AFileWithoutTheStartLineLeavesEveryDefault) {
  const ExtractionSwitches s = read("EXTRACT_MASS\nDO_NOT_COMPUTE_VALUES\nodb extractions\nPERCENTAGE=5\n");
  EXPECT_FALSE(s.mass || s.history || s.historyExtremes || s.field || s.allFieldOutputs || s.stress || s.spatial);
  EXPECT_FALSE(s.element || s.fieldSets || s.fieldComponents || s.engineeringMax || s.engineeringMin);
  EXPECT_FALSE(s.tensorInvariants || s.absoluteMax || s.absoluteMin);
  EXPECT_TRUE(s.computeValues);
  EXPECT_EQ(s.percentage, 0.0);
}

TEST_F(ConfigurationTest, TheStartLineIsExaminedForKeywordsToo) {
  EXPECT_TRUE(read("** ODB EXTRACTIONS EXTRACT_MASS").mass);
}

TEST_F(ConfigurationTest, LinesBeforeTheStartLineAreIgnored) {
  const ExtractionSwitches s = read("EXTRACT_MASS\nODB EXTRACTIONS\nEXTRACT_STRESS\n");
  EXPECT_FALSE(s.mass);
  EXPECT_TRUE(s.stress);
}

TEST_F(ConfigurationTest, EachKeywordSetsItsSwitch) {
  EXPECT_TRUE(read("ODB EXTRACTIONS\nEXTRACT_HISTORY").history);
  EXPECT_TRUE(read("ODB EXTRACTIONS\nMINMAX_HISTORY").historyExtremes);
  EXPECT_TRUE(read("ODB EXTRACTIONS\nEXTRACT_ALL").allFieldOutputs);
  EXPECT_TRUE(read("ODB EXTRACTIONS\nEXTRACT_SPATIAL").spatial);
  EXPECT_TRUE(read("ODB EXTRACTIONS\nEXTRACT_ELEMENT").element);
  EXPECT_TRUE(read("ODB EXTRACTIONS\nENGINEERING_MIN").engineeringMin);
  EXPECT_TRUE(read("ODB EXTRACTIONS\nENGINEERING_MAX").engineeringMax);
  EXPECT_TRUE(read("ODB EXTRACTIONS\nTENSOR_INVARIANTS").tensorInvariants);
  EXPECT_FALSE(read("ODB EXTRACTIONS\nDO_NOT_COMPUTE_VALUES").computeValues);
}

TEST_F(ConfigurationTest, ComponentsAloneTurnFieldExtractionOn) {
  const ExtractionSwitches s = read("ODB EXTRACTIONS\nEXTRACT_FIELD_COMPONENTS\n");
  EXPECT_TRUE(s.field);
  EXPECT_TRUE(s.fieldComponents);
  EXPECT_FALSE(s.fieldSets);
}

TEST_F(ConfigurationTest, AKeywordInsideAWordOrARemarkCounts) {
  EXPECT_TRUE(read("ODB EXTRACTIONS\n# do not NOEXTRACT_MASSES here").mass);
  EXPECT_FALSE(read("ODB EXTRACTIONS\nextract_mass Extract_Mass EXTRACT MASS").mass);
}

TEST_F(ConfigurationTest, AbsoluteKeywordsAreAcceptedWithoutEffect) {
  ExtractionSwitches s = read("ODB EXTRACTIONS\nABSOLUTE_MAX ABSOLUTE_MIN");
  EXPECT_TRUE(s.absoluteMax && s.absoluteMin);
  EXPECT_FALSE(s.engineeringMax || s.engineeringMin || s.field);
}

TEST_F(ConfigurationTest, PercentageIsTheNumberBehindTheFirstEqualsSign) {
  EXPECT_EQ(read("ODB EXTRACTIONS\nPERCENTAGE = 12.5\n").percentage, 12.5);
  EXPECT_EQ(read("ODB EXTRACTIONS\nPERCENTAGE=abc\n").percentage, 0.0);
  EXPECT_EQ(read("ODB EXTRACTIONS\nPERCENTAGE=7%\n").percentage, 7.0);
  EXPECT_EQ(read("ODB EXTRACTIONS\nX=3 PERCENTAGE=5\n").percentage, 3.0);
  EXPECT_EQ(read("ODB EXTRACTIONS\nPERCENTAGE=5\nPERCENTAGE=6").percentage, 6.0);
  EXPECT_EQ(read("ODB EXTRACTIONS PERCENTAGE=8").percentage, 8.0);
}

TEST_F(ConfigurationTest, CarriageReturnsAreTolerated) {
  const ExtractionSwitches s = read("ODB EXTRACTIONS\r\nPERCENTAGE = 12.5\r\nEXTRACT_MASS\r\n");
  EXPECT_EQ(s.percentage, 12.5);
  EXPECT_TRUE(s.mass);
}

TEST_F(ConfigurationTest, AFileThatCannotBeOpenedIsAnnouncedAndChangesNothing) {
  ExtractionSwitches switches;
  readConfiguration(directory_.file("none.txt"), switches);
  EXPECT_EQ(console(), "Unable to open file");
  EXPECT_TRUE(switches.computeValues);
}

TEST_F(ConfigurationTest, LinesMayBeEmptyAndTheLastOneMayHaveNoEnd) {
  const ExtractionSwitches s = read("\nODB EXTRACTIONS\n\n\nEXTRACT_MASS\n\nEXTRACT_ALL");
  EXPECT_TRUE(s.mass);
  EXPECT_TRUE(s.allFieldOutputs);
  const std::string withNul = std::string("ODB EXTRACTIONS") + '\0' + "EXTRACT_STRESS\n";
  EXPECT_TRUE(read(withNul).stress);
}

TEST_F(ConfigurationTest, APercentageWithoutEqualsSignEndsTheProcess) {
  EXPECT_EXIT(read("ODB EXTRACTIONS\nPERCENTAGE 5\n"), testing::ExitedWithCode(1),
              "no value for PERCENTAGE in the line: PERCENTAGE 5");
}

TEST(LeadingNumber, TakesTheLongestDecimalNumber) {
  EXPECT_EQ(leadingNumber(" \t\v\f\r\n+12.5e1x"), 125.0);
  EXPECT_EQ(leadingNumber("-.5"), -0.5);
  EXPECT_EQ(leadingNumber("5."), 5.0);
  EXPECT_EQ(leadingNumber("1e"), 1.0);
  EXPECT_EQ(leadingNumber("1e+"), 1.0);
  EXPECT_EQ(leadingNumber("1.2.3"), 1.2);
  EXPECT_EQ(leadingNumber("12,5"), 12.0);
}

TEST(LeadingNumber, IsZeroWhereNoneStarts) {
  for (const char* text : {"", " ", ".", "-", "e5", "+-3", "inf", "nan", "-INF", ". 5"}) {
    EXPECT_EQ(leadingNumber(text), 0.0) << text;
  }
  EXPECT_EQ(leadingNumber("0x1F"), 0.0);
}

TEST(LeadingNumber, HasAnyLength) {
  EXPECT_EQ(leadingNumber("0." + std::string(400, '0') + "1"), 0.0);
  EXPECT_EQ(leadingNumber(std::string(300, '0').append("7.25").append(300, '0')), 7.25);
  EXPECT_EQ(leadingNumber("1" + std::string(400, '0')), std::numeric_limits<double>::infinity());
  EXPECT_EQ(leadingNumber("12.500000000000000000000000000"), 12.5);
}

}  // namespace

// The driver asks for it; no test here opens a database.
odb_Odb& openOdb(const odb_String& path, bool, bool) {
  odb_Exception(odb_Exception::fileError, path.cStr()).Propagate();
  std::abort();
}
