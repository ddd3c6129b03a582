// Builds a catalog, object by object. Nested objects (steps, fields, blocks, ...) are added owner first, then what
// belongs to it. Names must be added in the order of their table.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "odbstore/catalog.h"
#include "odbstore/schema.h"

namespace odbstore {

// Labels of a set in one instance: numbers `first` to `first + count - 1` of an array.
struct MemberEntry {
  std::optional<std::string> instance;  // nothing for sets of an instance or part
  std::int32_t labels = kNone;
  std::int64_t first = 0;
  std::int64_t count = 0;
};

struct SetEntry {
  std::string name;
  std::vector<MemberEntry> members;
};

struct LocationEntry {
  LocationInfo info;
  std::int64_t rows = 0;
  std::int64_t storedRows = 0;
  std::int32_t nodeLabels = kNone;
  std::int32_t elementLabels = kNone;
  std::int32_t integrationPoints = kNone;
  std::int32_t rowOf = kNone;
};

struct BlockEntry {
  std::size_t location = 0;
  std::optional<int> type;
  std::vector<std::string> componentLabels;         // empty: the field's
  std::optional<std::vector<std::int32_t>> frames;  // nothing: the field's
  std::int32_t data = kNone;
  std::int64_t rows = 0;
  std::int64_t width = 0;
};

struct OutputEntry {
  std::string name;
  std::int32_t data = kNone;
  std::int64_t first = 0;
  std::int64_t samples = 0;
  std::int64_t width = 0;
};

// Names that the database gives itself; nothing if it gives none.
struct ModelNames {
  std::optional<std::string> name;
  std::optional<std::string> title;
  std::optional<std::string> producer;
  std::optional<std::string> assembly;
};

class CatalogBuilder {
 public:
  explicit CatalogBuilder(int layout);

  // An array with consecutive slabs starting at `offset`, and one with one chunk per slab.
  std::int32_t addArray(base::NumberFormat format, std::int64_t slabs, std::int64_t slabNumbers, std::int64_t offset);
  std::int32_t addPackedArray(base::NumberFormat format, Packing packing, std::int64_t slabs, std::int64_t slabNumbers,
                              std::span<const Extent> chunks);

  void setModel(const ModelNames& names, const std::optional<std::array<float, 6>>& symmetryAxis);
  void setChecksums(std::int64_t offset, std::int64_t count, std::int64_t block);
  void addPart(const std::string& name);
  void addInstance(const std::string& name, const std::string& part, std::int32_t nodeLabels, std::int32_t coordinates);
  void addElements(std::size_t instance, const std::string& type, std::int32_t labels, std::int32_t connectivity);
  // All sets of an owner and kind. Owners come in the order assembly, instances, parts, element sets first for each.
  void addSets(OwnerKind ownerKind, std::int32_t owner, SetKind kind, std::vector<SetEntry> sets);
  void addLocation(const std::string& id, const LocationEntry& location);

  void addStep(const std::string& name, const StepInfo& info);
  void addFrame(const FrameInfo& info);
  void addField(const std::string& name, const FieldInfo& info, const std::optional<std::vector<std::int32_t>>& frames);
  // How the field differs in a frame; frames ascending.
  void addChange(std::int32_t frame, const FieldInfo& info);
  void addBlock(const BlockEntry& block);
  void addHistoryRegion(const std::string& name, const HistoryRegionInfo& info);
  void addHistoryOutput(const OutputEntry& output);

  // One checksum per piece of each array, in the order in which the arrays were added.
  void setSums(std::vector<std::uint32_t> sums);
  std::vector<std::byte> build() const;

 private:
  std::int32_t text(std::string_view text);
  std::int32_t textOrNone(const std::optional<std::string>& text);
  std::int32_t list(const std::vector<std::int32_t>& numbers);
  std::int32_t texts(const std::vector<std::string>& texts);
  std::int32_t form(const FieldInfo& info);

  columns::CatalogT columns_;
  std::unordered_map<std::string, std::int32_t> texts_;
  std::map<std::vector<std::int32_t>, std::int32_t> lists_;
  std::map<std::vector<std::int32_t>, std::int32_t> forms_;
};

}  // namespace odbstore
