// The writer's implementation, shared by its sources.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "base/descriptor.h"
#include "base/output_file.h"
#include "hdf5/group.h"
#include "odbwriter/array_writer.h"
#include "odbwriter/declared_model.h"
#include "odbwriter/structure_writer.h"

namespace odbstore {

class DatabaseWriter::Impl {
 public:
  Impl(std::unique_ptr<base::OutputFile> own, WriterOptions options);
  Impl(std::string temporaryPath, std::string name, WriterOptions options);

  DeclaredModel& model() { return model_; }

  [[noreturn]] void fail(const std::string& object, const std::string& reason) const;
  void requireName(const std::string& name, const std::string& path) const;
  void requireFrame(const DeclaredField& field, int frame) const;
  void requireOpenHistories(int step, const std::string& path) const;
  DeclaredInstance& instance(const std::string& name);

  void addSet(const Owner& owner, SetKind kind, const std::string& name, std::vector<SetMembers> members);
  Location addLocation(const LocationInfo& info, LocationLabels labels, std::vector<int> rowOf);
  Step addStep(const std::string& name, const StepInfo& info);
  Field addField(Step step, const std::string& name, const FieldInfo& info);
  void describeField(Field field, int frame, const FieldInfo& info);
  Block addBlock(Field field, Location location, BlockForm form);
  Region addHistoryRegion(Step step, const std::string& name, const HistoryRegionInfo& info);
  History addHistory(Region region, const std::string& name, std::int64_t samples, std::int64_t width);

  void layOut();
  template <class Number>
  void writeRows(Block block, int frame, std::span<const Number> rows);
  void writeSamples(History history, std::span<const float> samples);
  void finish();

 private:
  // Whether a location is the one that an earlier call has declared.
  bool isLocation(std::size_t index, const LocationInfo& info, const LocationLabels& labels,
                  const std::vector<int>& rowOf) const;
  // Makes the file when there is something to put into it.
  void open();
  // Each allocates what is not yet allocated, and writes what is known.
  void layOutMeshes();
  void layOutSets();
  void layOutLocation(std::size_t index);
  void layOutBlock(std::size_t index);
  void layOutHistories();
  void takeRoom();
  template <class Number>
  void writeWhole(std::size_t array, const std::vector<Number>& numbers, const ObjectName& object);
  void writeSets(const SetsKey& key, const DeclaredSets& sets);
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
  // From the first that is laid out.
  std::optional<h5::Group> root_;
  base::Descriptor file_;
  std::optional<ArrayWriter> arrays_;
  std::optional<StructureWriter> structure_;
  std::int64_t takenEnd_ = 0;                  // room is taken on the disk up to here
  std::vector<std::vector<int>> blockFrames_;  // of each block with room, ascending: slab i is of frame i of these
  std::vector<std::size_t> locationPlaces_;    // of each location its place in the catalog
  std::vector<std::byte> expanded_;
};

}  // namespace odbstore
