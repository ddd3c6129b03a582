// What the sources of the reader share.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "hdf5/group.h"
#include "odbstore/reader.h"

namespace odbstore {

// The open file, with the locations that have been asked for.
class FileAccess {
 public:
  FileAccess(std::string path, h5::Group root) : path_(std::move(path)), root_(std::move(root)) {}

  const std::string& path() const { return path_; }
  const h5::Group& root() const { return root_; }

  // The location of that id, an error of `user` when there is none.
  std::shared_ptr<const StoredLocation> location(const std::string& id, const h5::Object& user);

  // The group that holds the sets of an owner, absent when it has none of the kind. It stays open: a model may have
  // thousands of sets, whose labels are asked for one by one.
  const std::optional<h5::Group>& sets(const Owner& owner, SetKind kind);

 private:
  std::string path_;
  h5::Group root_;
  std::map<std::string, std::shared_ptr<const StoredLocation>> locations_;
  std::map<std::tuple<OwnerKind, std::string, SetKind>, std::optional<h5::Group>> sets_;
};

// A step's members, opened through `file`.
std::shared_ptr<const StoredStep> openStep(std::shared_ptr<FileAccess> file, const std::string& name);

// All fields of a step of `frames` frames, by name.
std::vector<StoredField> readFields(FileAccess& file, const h5::Group& step, int frames);

// The attributes of a field.
FieldInfo readFieldInfo(const h5::Group& group);

LocationInfo readLocationInfo(const h5::Object& object);

// Reads what a step says of itself, and of a history region, in both layouts.
StepInfo readStepInfo(const h5::Group& group);
HistoryRegionInfo readHistoryRegionInfo(const h5::Group& group);
HistorySamples readHistorySamples(const h5::Dataset& dataset);

// The names behind the links of a group that may be absent, and the same for an open one; bytes ascending.
std::vector<std::string> memberNames(const std::optional<h5::Group>& group);

// The group that holds the sets of an owner, absent when it has none of the kind.
std::optional<h5::Group> setsGroup(const h5::Group& root, const Owner& owner, SetKind kind);
std::vector<SetMembers> readSetMembers(const h5::Group& sets, const Owner& owner, const std::string& set);
std::vector<InstanceInfo> readInstances(const h5::Group& root);
std::optional<std::array<float, 6>> readSymmetryAxis(const h5::Group& root);

}  // namespace odbstore
