// Groups and their members.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "hdf5/dataset.h"

namespace h5 {

enum class LinkOrder { byName, byCreation };
enum class MemberKind { group, dataset, other };

class Group : public Object {
 public:
  Group(Handle id, std::string path, std::shared_ptr<const FileContext> file);

  bool has(const std::string& link) const;
  MemberKind kindOf(const std::string& link) const;

  // A member; its absence or another kind of object under that link is an error.
  Group group(const std::string& link) const;
  Dataset dataset(const std::string& link) const;
  std::optional<Group> findGroup(const std::string& link) const;
  std::optional<Dataset> findDataset(const std::string& link) const;

  // The link names. By creation only where the group tracks it; by name (bytes ascending) otherwise.
  std::vector<std::string> links(LinkOrder order = LinkOrder::byName) const;

  Group createGroup(const std::string& link, bool trackOrder = false) const;
  // `link` may be a path through groups that are there.
  Dataset createDataset(const std::string& link, base::NumberFormat format, const Dims& dims,
                        const Storage& storage = {}) const;
  void createInts(const std::string& link, std::span<const int> values) const;
  void createLongs(const std::string& link, std::span<const std::int64_t> values) const;
  void createFloats(const std::string& link, std::span<const float> values, const Dims& dims) const;
  void createDoubles(const std::string& link, std::span<const double> values, const Dims& dims) const;
  void createStrings(const std::string& link, std::span<const std::string> values) const;

 private:
  Dataset createDataset(const std::string& link, hid_t type, const Dims& dims, const Storage& storage) const;
  std::string memberPath(const std::string& link) const;
  // Nothing if there is no such link; another kind of object under it is an error.
  std::optional<Handle> findMember(const std::string& link) const;
  std::optional<Handle> findMember(const std::string& link, H5I_type_t kind) const;
  Handle present(const std::string& link, std::optional<Handle> member) const;
};

}  // namespace h5
