// Result file, deck and status file in; what stands in the database, read back through the store.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "frd_text.h"
#include "importers/calculix/calculix_source.h"
#include "importers/run/run_import.h"
#include "importers_test.h"
#include "odbstore/reader.h"

namespace importers::calculix {

class ImportTest : public testing::Test {
 protected:
  ImportSummary import(const std::string& results, const std::string& deck = "", const std::string& status = "",
                       bool isStrict = false) {
    CalculixRun run = run_;
    ImportRequest request = request_;
    run.results = request.results = writeText(directory_, "job.frd", results);
    if (!deck.empty()) run.deck = writeText(directory_, "job.inp", deck);
    run.status = directory_.file("job.sta");
    if (!status.empty()) writeText(directory_, "job.sta", status);
    run.isStrict = isStrict;
    request.output = output_;
    warnings_.clear();
    const WarningSink warn = [this](const base::Diagnostic& said) { warnings_.push_back(base::textOf(said)); };
    return runImport(*openCalculix(run, warn), request, warn);
  }

  std::string failure(const std::string& results, const std::string& deck = "", bool isStrict = false) {
    const std::string message = failureOf([&] { import(results, deck, "", isStrict); });
    EXPECT_FALSE(std::filesystem::exists(output_)) << "nothing may stand under the final name";
    return message;
  }

  // A field of a step; good as long as the step.
  static const odbstore::StoredField& fieldOf(const odbstore::StoredStep& step, const std::string& name) {
    for (const odbstore::StoredField& field : step.fields()) {
      if (field.name == name) return field;
    }
    throw std::runtime_error("no field " + name);
  }

  static std::vector<float> rowsOf(const odbstore::StoredBlock& block, int frame = 0) {
    const auto count = static_cast<std::size_t>(block.rows() * block.width());
    std::vector<float> rows(count);
    if (!block.isDouble()) {
      block.read(frame, rows.data());
      return rows;
    }
    std::vector<double> doubles(count);
    block.read(frame, doubles.data());
    std::transform(doubles.begin(), doubles.end(), rows.begin(), [](double row) { return static_cast<float>(row); });
    return rows;
  }

  std::vector<odbstore::FrameInfo> framesOf(const std::string& step) {
    return odbstore::Reader(output_).step(step)->frames();
  }

  std::vector<double> frameValues(const std::string& step) {
    std::vector<double> values;
    for (const odbstore::FrameInfo& frame : framesOf(step)) values.push_back(frame.value);
    return values;
  }

  std::vector<int> increments(const std::string& step) {
    std::vector<int> numbers;
    for (const odbstore::FrameInfo& frame : framesOf(step)) numbers.push_back(frame.incrementNumber);
    return numbers;
  }

  std::vector<std::string> descriptions(const std::string& step) {
    std::vector<std::string> texts;
    for (const odbstore::FrameInfo& frame : framesOf(step)) texts.push_back(frame.description);
    return texts;
  }

  // For what the arguments do not say.
  CalculixRun run_;
  ImportRequest request_;
  TemporaryDirectory directory_;
  std::string output_ = directory_.file("job.odb");
  std::vector<std::string> warnings_;
};

// A temperature at one node, to make a frame.
inline std::string temperature(const frd_text::Frame& at, double value = 20) {
  return frd_text::result(at, "NDTEMP", frd_text::kTemperature, {{1, {value}}});
}

}  // namespace importers::calculix
