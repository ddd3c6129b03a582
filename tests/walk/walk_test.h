// What the tests of the walk share: a clean process state, the console and the result file as texts, and short ways to
// write down fields.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "odbaccess/odb_api.h"
#include "reduce/field_value_access.h"
#include "reduce/reduction_results.h"
#include "result/extraction_switches.h"

class WalkTest : public testing::Test {
 protected:
  WalkTest() : console_(std::cout.rdbuf(consoleText_.rdbuf())) {
    extractionSwitches() = ExtractionSwitches();
    reductionResults() = ReductionResults();
    componentSlots() = ComponentSlots();
  }
  ~WalkTest() override { std::cout.rdbuf(console_); }

  ExtractionSwitches& switches() { return extractionSwitches(); }
  std::string console() const { return consoleText_.str(); }
  std::string records() const { return out_.str(); }

  // The records one by one, and forgotten afterwards.
  std::vector<std::string> takeLines() {
    std::vector<std::string> lines;
    std::istringstream text(out_.str());
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    out_.str("");
    return lines;
  }

  // The names of the records, cut behind the part that all share.
  std::vector<std::string> takeNames(const std::string& head) {
    std::vector<std::string> names;
    for (const std::string& line : takeLines()) {
      EXPECT_EQ(line.substr(0, head.size()), head);
      names.push_back(line.substr(head.size(), line.find('\t') - head.size()));
    }
    return names;
  }

  std::ostringstream out_;

 private:
  std::ostringstream consoleText_;
  std::streambuf* console_;
};

inline memory::Value scalarValue(float number) {
  memory::Value value;
  value.floats = {number};
  return value;
}

inline memory::Value vectorValue(float x, float y, float z, float magnitude) {
  memory::Value value;
  value.type = odb_Enum::vector;
  value.floats = {x, y, z};
  value.magnitude = magnitude;
  return value;
}

inline memory::Value tensorValue(int type, std::vector<float> components, float mises) {
  memory::Value value;
  value.type = type;
  value.floats = std::move(components);
  value.mises = mises;
  return value;
}

inline memory::Block nodeBlock(int type, int width, std::vector<float> numbers) {
  memory::Block block;
  block.type = type;
  block.width = width;
  block.floats = std::move(numbers);
  return block;
}

inline memory::Block elementBlock(int type, int width, std::vector<float> numbers, std::vector<float> mises = {}) {
  memory::Block block = nodeBlock(type, width, std::move(numbers));
  block.elementBased = true;
  block.mises = std::move(mises);
  return block;
}

inline const std::vector<std::string> kSixLabels = {"11", "22", "33", "12", "13", "23"};
