#include "recognise.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/temporary_directory.h"

namespace batch {
namespace {

const std::string kHdf5 = "\x89HDF\r\n\x1a\n";

// Knows HDF5 files of the name .e, text that begins with "run", and jobs by the name of their .run.
class RunImporter : public importers::Importer {
 public:
  std::string resultFile(const std::string& named) const override { return named + ".run"; }
  bool recognises(std::string_view start, const std::string& path) const override {
    return start.starts_with("run") || (start.starts_with(kHdf5) && path.ends_with(".e"));
  }
  std::string beginning() const override { return "run"; }
  void addOptions(tool::Command& /*command*/) override {}
  std::vector<std::string> inputs(const importers::OpenRequest& request) const override {
    return {request.results, request.results + ".deck"};
  }
  std::unique_ptr<importers::Source> open(const importers::OpenRequest& /*request*/,
                                          const importers::WarningSink& /*warn*/) override {
    return nullptr;
  }
};

std::unique_ptr<importers::Importer> makeImporter() { return std::make_unique<RunImporter>(); }

class Recognise : public ::testing::Test {
 protected:
  std::string file(const std::string& name, const std::string& content) const {
    std::ofstream(directory_.file(name), std::ios::binary) << content;
    return directory_.file(name);
  }

  const TemporaryDirectory directory_;
  const std::vector<importers::Format> table_ = {{"runs", "runs", makeImporter}, {"absent", "not in a build", nullptr}};
  const InputFormats formats_{table_};
};

TEST_F(Recognise, Hdf5ThatNoFormatKnowsIsADatabase) {
  const std::string path = file("a.h5", kHdf5);
  const Recognised found = formats_.recognise(path);
  EXPECT_TRUE(found.isDatabase);
  EXPECT_EQ(found.files, std::vector<std::string>{path});
}

TEST_F(Recognise, Hdf5OfAFormatIsImported) {
  const std::string path = file("a.e", kHdf5 + "more");
  const Recognised found = formats_.recognise(path);
  EXPECT_FALSE(found.isDatabase);
  EXPECT_EQ(found.files, (std::vector<std::string>{path, path + ".deck"}));
}

TEST_F(Recognise, ContentCountsNotTheName) {
  EXPECT_FALSE(formats_.recognise(file("results", "run 1")).isDatabase);
  EXPECT_FALSE(formats_.recognise(file("a.h5", "run 1")).isDatabase);
}

TEST_F(Recognise, ADatabaseIsKnownByItsNameEvenIfItIsMissing) {
  EXPECT_TRUE(formats_.recognise(file("a.odb", "")).isDatabase);
  EXPECT_TRUE(formats_.recognise(directory_.file("gone.odb")).isDatabase);
}

TEST_F(Recognise, AJobIsFoundByItsFile) {
  const std::string path = file("job.run", "run 1");
  EXPECT_EQ(formats_.recognise(directory_.file("job")).files, (std::vector<std::string>{path, path + ".deck"}));
}

TEST_F(Recognise, WhatNobodyKnowsIsLeftToTheImporters) {
  const std::string path = file("a.txt", "text");
  EXPECT_FALSE(formats_.recognise(path).isDatabase);
  EXPECT_EQ(formats_.recognise(path).files, std::vector<std::string>{path});
}

}  // namespace
}  // namespace batch
