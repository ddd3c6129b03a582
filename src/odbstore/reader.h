// Reads a database, of layout 2 or 3. What is in it is known from its catalog, which is read when it is opened; labels,
// rows and samples are read when they are asked for.
//
// Whatever does not fit the layout is a StoreError that names the file and the object.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "odbstore/schema.h"
#include "odbstore/store_error.h"
#include "odbstore/stored_step.h"

namespace odbstore {

class DatabaseFile;
class LocationTable;

struct InstanceInfo {
  std::string name;
  std::string part;
};

// The nodes and elements of an instance.
struct Mesh {
  struct Elements {
    std::string type;
    std::vector<int> labels;
    std::vector<int> connectivity;  // node labels, [elements, nodes of an element]
  };

  std::vector<int> nodes;           // labels
  std::vector<double> coordinates;  // [nodes, 3]
  std::vector<Elements> elements;   // by type, bytes ascending
};

class Reader {
 public:
  // Throws StoreError for a database of layout 1 too.
  explicit Reader(const std::string& path);
  explicit Reader(std::shared_ptr<const DatabaseFile> file);
  // Null where the database is of an older layout, which must be upgraded first.
  static std::shared_ptr<const Reader> openIfNewest(const std::string& path);
  ~Reader();
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  const std::shared_ptr<const DatabaseFile>& file() const { return file_; }

  // The name the database gives itself, else the path as opened.
  std::string name() const;
  std::string title() const;
  std::string producer() const;
  std::string assemblyName() const;

  // All lists of names: bytes ascending, but for the steps, which keep their order.
  std::vector<std::string> parts() const;
  const std::vector<InstanceInfo>& instances() const { return instances_; }
  std::vector<std::string> sets(const Owner& owner, SetKind kind) const;
  std::vector<SetMembers> setMembers(const Owner& owner, SetKind kind, const std::string& set) const;
  // Two points of three coordinates.
  std::optional<std::array<float, 6>> symmetryAxis() const;
  // Nothing where the instance has no nodes.
  std::optional<Mesh> mesh(const std::string& instance) const;

  std::vector<std::string> steps() const;
  // An error when there is none of the name.
  std::shared_ptr<const StoredStep> step(const std::string& name) const;
  // Step `place` of steps().
  std::shared_ptr<const StoredStep> stepAt(std::size_t place) const;

 private:
  // The places of an owner's sets of a kind in the catalog's table, [first, end).
  std::pair<std::size_t, std::size_t> setPlaces(const Owner& owner, SetKind kind) const;

  std::shared_ptr<const DatabaseFile> file_;
  std::shared_ptr<LocationTable> locations_;
  std::vector<InstanceInfo> instances_;
};

}  // namespace odbstore
