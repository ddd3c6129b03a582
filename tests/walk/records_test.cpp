#include <cmath>
#include <fstream>
#include <limits>

#include "reduce/process_field_output.h"
#include "result/record_name.h"
#include "result/result_file.h"
#include "support/temporary_directory.h"
#include "walk_test.h"

namespace {

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class RecordsTest : public WalkTest {
 protected:
  template <class Number>
  std::string written(Number number) {
    out_.str("");
    out_ << number;
    return out_.str();
  }
  std::string headOf(const char* step, int frame, const char* region, const char* field) {
    out_.str("");
    out_ << RecordHead(step, frame, region, field);
    return out_.str();
  }
};

TEST_F(RecordsTest, ExponentsHaveAtLeastThreeDigits) {
  EXPECT_EQ(written(1234567.0), "1.23457e+006");
  EXPECT_EQ(written(12345678.0), "1.23457e+007");
  EXPECT_EQ(written(4.5e-12), "4.5e-012");
  EXPECT_EQ(written(-1e-7F), "-1e-007");
  EXPECT_EQ(written(1e100), "1e+100");
  EXPECT_EQ(written(1.7976931348623157e308), "1.79769e+308");
}

TEST_F(RecordsTest, OtherNumbersAreWrittenAsUsual) {
  EXPECT_EQ(written(0.5), "0.5");
  EXPECT_EQ(written(100.0), "100");
  EXPECT_EQ(written(0.0001234567), "0.000123457");
  EXPECT_EQ(written(123456.7), "123457");
  EXPECT_EQ(written(999999.5), "1e+006");
  EXPECT_EQ(written(0.0), "0");
  EXPECT_EQ(written(-0.0), "-0");
  EXPECT_EQ(written(0), "0");
  EXPECT_EQ(written(1234567), "1234567");
  EXPECT_EQ(written(0.1F), "0.1");
}

TEST_F(RecordsTest, NumbersThatAreNotFiniteAreWords) {
  EXPECT_EQ(written(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(written(-std::numeric_limits<float>::infinity()), "-inf");
  EXPECT_EQ(written(std::nan("")), "nan");
  EXPECT_EQ(written(std::copysign(std::nan(""), -1.0)), "nan");
}

TEST_F(RecordsTest, AStepNamedWithABlankIsCleaned) {
  EXPECT_EQ(headOf("Step 1", 12, "", "S").substr(0, 14), "Step_1__Frame_");
}

TEST_F(RecordsTest, AWholeModelRecordHasOneSeparatorBehindTheIncrementAndASetItsTag) {
  EXPECT_EQ(headOf("Step-1", 12, "", "S"), "Step_1__Frame_12__S");
  EXPECT_EQ(headOf("Step-1", 12, "__TOP", "S"), "Step_1__Frame_12__TOP__S");
  EXPECT_EQ(headOf("Step-1", 12, "__PLATE-1_TOP", "S"), "Step_1__Frame_12__PLATE_1_TOP__S");
}

TEST_F(RecordsTest, OnlyHyphensAndBlanksAreReplaced) {
  EXPECT_EQ(cleanedName("A-b c--d  E.f\tg/h"), "A_b_c__d__E.f\tg/h");
}

TEST_F(RecordsTest, WithTheEngineeringMaximumAloneAQuantityHasThreeRecords) {
  switches().allFieldOutputs = switches().engineeringMax = true;
  memory::Field field;
  field.name = "NT";
  field.blocks = {nodeBlock(odb_Enum::scalar, 1, {1, 2, 3})};
  processFieldOutput(odb_FieldOutput(field), out_, "S", 1, "ALL", "", "", 9);
  EXPECT_THAT(takeNames("S__Frame_1__NT__"), testing::ElementsAre("max", "min", "enggmax"));
}

TEST_F(RecordsTest, TheFileHasTheNumberFormatAndIsEmptiedFirst) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("params.txt");
  std::ofstream(path) << "something long and old";
  ResultFile file(path, "\n");
  file << 1e-7 << std::endl;
  EXPECT_EQ(contentOf(path), "1e-007\n");
  EXPECT_TRUE(file.close());
}

TEST_F(RecordsTest, LinesCanEndInCarriageReturnAndLineFeed) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("params.txt");
  ResultFile file(path, "\r\n");
  file << "a" << 1 << std::endl << "b\nc\n\nd" << '\n';
  EXPECT_TRUE(file.close());
  EXPECT_EQ(contentOf(path), "a1\r\nb\r\nc\r\n\r\nd\r\n");
}

TEST_F(RecordsTest, AFileThatCannotBeMadeOrWrittenTellsAtItsClose) {
  ResultFile missing("/nonexistent/params.txt", "\n");
  missing << "x" << std::endl;
  EXPECT_FALSE(missing.close());
  ResultFile full("/dev/full", "\n");
  full << "x" << std::endl;
  EXPECT_FALSE(full.close());
}

TEST_F(RecordsTest, AFileThatFailedOnceStaysFailed) {
  ResultFile full("/dev/full", "\n");
  full << "x" << std::flush;
  full << "y" << std::flush;
  EXPECT_FALSE(full.close());
}

}  // namespace
