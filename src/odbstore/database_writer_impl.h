// The writer's inside, shared by its sources.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "base/descriptor.h"
#include "base/output_file.h"
#include "hdf5/group.h"
#include "odbstore/array_writer.h"
#include "odbstore/declared_model.h"
#include "odbstore/structure_writer.h"

namespace odbstore {

class DatabaseWriter::Impl {
 public:
  Impl(std::unique_ptr<base::OutputFile> own, WriterOptions options);
  Impl(std::string temporaryPath, std::string name, WriterOptions options);

  // The model while it may still grow.
  DeclaredModel& declared() {
    requireDeclaring();
    return model_;
  }
  const DeclaredModel& model() const { return model_; }

  [[noreturn]] void fail(const std::string& object, const std::string& reason) const;
  void requireDeclaring() const;
  void requireName(const std::string& name, const std::string& path) const;
  void requireFrame(const DeclaredField& field, int frame) const;
  DeclaredInstance& instance(const std::string& name);

  void addSet(const Owner& owner, SetKind kind, const std::string& name, std::vector<SetMembers> members);
  Location addLocation(const LocationInfo& info, LocationLabels labels, std::vector<int> rowOf);
  Step addStep(const std::string& name, const StepInfo& info);
  Field addField(Step step, const std::string& name, const FieldInfo& info);
  void describeField(Field field, int frame, const FieldInfo& info);
  Block addBlock(Field field, Location location, BlockForm form);
  Region addHistoryRegion(Step step, const std::string& name, const HistoryRegionInfo& info);
  History addHistory(Region region, const std::string& name, std::int64_t samples, std::int64_t width);

  void begin();
  template <class Number>
  void writeRows(Block block, int frame, std::span<const Number> rows);
  void writeSamples(History history, std::span<const float> samples);
  void finish();

 private:
  void takeRoom();
  void writeModel();
  template <class Number>
  void writeWhole(std::size_t array, const std::vector<Number>& numbers, const ObjectName& object);
  void writeSets();
  void writeLocations();
  std::string blockData(const DeclaredBlock& block) const;
  void requireComplete() const;
  std::vector<std::byte> makeCatalog();
  void describeModel(CatalogBuilder& catalog) const;
  void describeSets(CatalogBuilder& catalog) const;
  void describeLocations(CatalogBuilder& catalog);
  void describeSteps(CatalogBuilder& catalog) const;
  void describeField(const DeclaredField& field, CatalogBuilder& catalog) const;
  void describeHistories(const DeclaredStep& step, CatalogBuilder& catalog) const;
  std::int64_t writeCatalog(std::span<const std::byte> catalog);
  void writeTrailer(std::vector<std::byte> catalog, std::int64_t offset);

  std::unique_ptr<base::OutputFile> own_;  // none when the file is somebody else's
  std::string path_;                       // where it grows
  std::string name_;
  WriterOptions options_;
  DeclaredModel model_;
  std::unordered_multimap<std::size_t, int> locationByHash_;
  // From begin() on.
  std::optional<h5::Group> root_;
  base::Descriptor file_;
  std::optional<ArrayWriter> arrays_;
  ModelArrays places_;
  std::vector<std::vector<int>> blockFrames_;  // of each block, ascending: slab i is of frame i of these
  std::vector<std::size_t> locationPlaces_;    // of each location its place in the catalog
  std::vector<std::byte> expanded_;
};

}  // namespace odbstore
