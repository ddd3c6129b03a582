#include <bit>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <random>

#include "reduce/process_field_output.h"
#include "result/number_format.h"
#include "result/record_line.h"
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
    RecordLine line;
    line << number;
    line.end(out_);
    return takeLines().at(0);
  }
  std::string headOf(const char* step, int frame, const char* region, const char* field) {
    return std::string(RecordHead(step, frame, region, field).text());
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

// What printf writes, with an exponent of three digits.
std::string byPrintf(double number) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.6g", number);
  std::string text = buffer;
  const std::size_t mark = text.find('e');
  if (mark != std::string::npos && text.size() - mark < 5) text.insert(mark + 2, 1, '0');
  return text;
}

TEST_F(RecordsTest, NumbersOfEverySizeAreThoseOfPrintf) {
  std::mt19937_64 random(7);
  const auto check = [](double number) {
    std::string text;
    appendNumber(text, number);
    ASSERT_EQ(text, byPrintf(number)) << std::hexfloat << number;
  };
  for (int round = 0; round < 60'000; ++round) {
    const auto bits = std::bit_cast<double>(random());
    if (std::isfinite(bits)) {
      ASSERT_NO_FATAL_FAILURE(check(bits));
    }
    const int exponent = static_cast<int>(random() % 60) - 30;
    const double power = std::pow(10.0, exponent);
    ASSERT_NO_FATAL_FAILURE(
        check(static_cast<double>(static_cast<float>(std::normal_distribution<double>()(random) * power))));
    // Seven digits, half of them in the middle of two numbers of six or next to it.
    const auto seven = static_cast<double>(random() % 9'000'000 + 1'000'000) * 10 + (round % 2 == 0 ? 5 : 0);
    for (const double number : {seven * power, seven / power, seven}) {
      ASSERT_NO_FATAL_FAILURE(check(number));
      ASSERT_NO_FATAL_FAILURE(check(std::nextafter(number, 0.0)));
      ASSERT_NO_FATAL_FAILURE(check(-std::nextafter(number, 1e300)));
    }
  }
}

TEST_F(RecordsTest, NumbersAroundPowersOfTenAreThoseOfPrintf) {
  for (int exponent = -310; exponent <= 308; ++exponent) {
    for (const double digits : {1.0, 0.999999, 0.9999994999, 0.9999995, 0.99999951, 0.99999949999999, 5.0, 9.999995}) {
      double number = digits * std::pow(10.0, exponent);
      if (!std::isfinite(number)) continue;
      for (int step = 0; step < 4; ++step) {
        std::string text;
        appendNumber(text, number);
        EXPECT_EQ(text, byPrintf(number));
        number = std::nextafter(number, step % 2 == 0 ? 0.0 : 1e308);
      }
    }
  }
}

TEST_F(RecordsTest, ALineIsInTheFileWhenItEndsAndTheFileIsEmptiedFirst) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("params.txt");
  std::ofstream(path) << "something long and old";
  ResultFile file(path, "\n");
  RecordLine line;
  line << "a\t" << 1e-7;
  EXPECT_EQ(contentOf(path), "");
  line.end(file);
  EXPECT_EQ(contentOf(path), "a\t1e-007\n");
  line << "b";
  line.end(file);
  EXPECT_EQ(contentOf(path), "a\t1e-007\nb\n");
  EXPECT_TRUE(file.close());
}

TEST_F(RecordsTest, LongTextsReachTheFileWhole) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("params.txt");
  ResultFile file(path, "\n");
  std::string expected;
  for (int i = 0; i < 40; ++i) {
    const std::string text(static_cast<std::size_t>(i) * 1000, static_cast<char>('a' + i % 26));
    file << text;
    expected += text;
  }
  EXPECT_TRUE(file.close());
  EXPECT_EQ(contentOf(path), expected);
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
