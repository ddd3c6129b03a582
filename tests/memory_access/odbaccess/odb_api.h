// The access library once more, in memory: just what the extraction asks of it, over plain structures that a test
// fills. The extraction's folders compile against this header in place of the real one, which shows that they need
// nothing else.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "odbaccess/memory_fields.h"
#include "odbaccess/nex_Exception.h"
#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_Exception.h"
#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_String.h"

class odb_FieldLocation {
 public:
  const odb_Sequence<odb_String>& sectionPoints() const { return points_; }

 private:
  odb_Sequence<odb_String> points_;
};

class odb_SequenceFieldLocation {
 public:
  int size() const { return 1; }
  const odb_FieldLocation& constGet(unsigned) const { return location_; }

 private:
  odb_FieldLocation location_;
};

class odb_Set {
 public:
  odb_Set() = default;
  explicit odb_Set(const std::string& name) : name_(name) {}
  odb_String name() const { return odb_String(name_); }

 private:
  std::string name_;
};

using odb_SetRepository = odb_Repository<odb_String, odb_Set>;

class odb_FieldOutput {
 public:
  odb_FieldOutput(const memory::Field& field) : f(field), values_(field.values) {
    for (const memory::Block& block : field.blocks) blocks_.append(odb_FieldBulkData(block));
  }
  odb_String name() const { return odb_String(f.name); }
  odb_String description() const { return odb_String(f.description); }
  int type() const { return f.type; }
  bool hasEngineeringShear() const { return false; }
  odb_Sequence<odb_String> componentLabels() const {
    odb_Sequence<odb_String> labels;
    for (const std::string& label : f.labels) labels.append(odb_String(label));
    return labels;
  }
  odb_Sequence<odb_InvariantEnum> validInvariants() const { return odb_Sequence<odb_InvariantEnum>(f.invariants); }
  const odb_SequenceFieldValue& values() const { return values_; }
  const odb_SequenceFieldBulkData& bulkDataBlocks() const { return blocks_; }
  const odb_SequenceFieldLocation& locations() const { return locations_; }
  // The field itself without rows for a set that the test says nothing of.
  odb_FieldOutput getSubset(const odb_Set& set) const {
    const auto found = f.subsets.find(set.name().cStr());
    memory::Field subset = f;
    subset.values.clear();
    subset.blocks.clear();
    if (found != f.subsets.end()) {
      subset.values = found->second.values;
      subset.blocks = found->second.blocks;
    }
    return subset;
  }

 private:
  memory::Field f;
  odb_SequenceFieldValue values_;
  odb_SequenceFieldBulkData blocks_;
  odb_SequenceFieldLocation locations_;
};

using odb_FieldOutputRepository = odb_Repository<odb_String, odb_FieldOutput>;
using odb_FieldOutputRepositoryIT = odb_RepositoryIT<odb_FieldOutput>;

class odb_HistoryOutput {
 public:
  odb_HistoryOutput(std::string name, std::vector<std::vector<float>> samples)
      : name_(std::move(name)), samples_(std::move(samples)) {}
  virtual ~odb_HistoryOutput() = default;
  virtual odb_SequenceSequenceFloat data() const {
    odb_SequenceSequenceFloat sequence;
    for (const std::vector<float>& s : samples_) sequence.append(odb_SequenceFloat(std::span<const float>(s)));
    return sequence;
  }
  odb_String name() const { return odb_String(name_); }

 private:
  std::string name_;
  std::vector<std::vector<float>> samples_;
};

struct odb_Node {
  int label_;
  int label() const { return label_; }
};
using odb_Element = odb_Node;

struct odb_SectionPoint {
  int number_;
  int number() const { return number_; }
};

class odb_HistoryPoint {
 public:
  explicit odb_HistoryPoint(const memory::HistoryRegion& region) : r(region) {}
  odb_Node node() const { return {r.node}; }
  odb_Element element() const { return {r.element}; }
  int integrationPoint() const { return r.integrationPoint; }
  odb_SectionPoint sectionPoint() const { return {r.sectionPoint}; }
  odb_Set region() const { return odb_Set(r.set); }

 private:
  memory::HistoryRegion r;
};

class odb_HistoryRegion {
 public:
  odb_HistoryRegion(const memory::HistoryRegion& region) : r(region) {}
  odb_String description() const { return odb_String(r.description); }
  odb_HistoryPoint historyPoint() const { return odb_HistoryPoint(r); }
  odb_Repository<odb_String, odb_HistoryOutput> historyOutputs() const {
    std::map<odb_String, odb_HistoryOutput> outputs;
    for (const auto& [name, samples] : r.outputs) outputs.emplace(odb_String(name), odb_HistoryOutput(name, samples));
    return odb_Repository<odb_String, odb_HistoryOutput>(std::move(outputs));
  }

 private:
  memory::HistoryRegion r;
};

using odb_HistoryRegionRepository = odb_Repository<odb_String, odb_HistoryRegion>;

class odb_Frame {
 public:
  odb_Frame(const memory::Frame& frame) : f(frame) {
    std::map<odb_String, odb_FieldOutput> fields;
    for (const memory::Field& field : frame.fields) fields.emplace(odb_String(field.name), odb_FieldOutput(field));
    fields_ = odb_FieldOutputRepository(std::move(fields));
  }
  int incrementNumber() const { return f.increment; }
  odb_String description() const { return odb_String(f.description); }
  const odb_FieldOutputRepository& fieldOutputs() const { return fields_; }

 private:
  memory::Frame f;
  odb_FieldOutputRepository fields_;
};

using odb_SequenceFrame = odb_Sequence<odb_Frame>;

class odb_Step {
 public:
  odb_Step(const memory::Step& step) : s(step) {
    for (const memory::Frame& frame : step.frames) frames_.append(odb_Frame(frame));
    std::map<odb_String, odb_HistoryRegion> regions;
    for (const memory::HistoryRegion& r : step.histories) regions.emplace(odb_String(r.name), odb_HistoryRegion(r));
    histories_ = odb_HistoryRegionRepository(std::move(regions));
  }
  odb_String name() const { return odb_String(s.name); }
  double mass() const { return s.mass; }
  odb_SequenceDouble massCenter() const { return odb_SequenceDouble(std::span<const double>(s.massCenter)); }
  odb_SequenceDouble inertiaAboutCenter() const {
    return odb_SequenceDouble(std::span<const double>(s.inertiaAboutCenter));
  }
  odb_SequenceDouble inertiaAboutOrigin() const {
    return odb_SequenceDouble(std::span<const double>(s.inertiaAboutOrigin));
  }
  const odb_HistoryRegionRepository& historyRegions() const { return histories_; }
  const odb_SequenceFrame& frames() const { return frames_; }

 private:
  memory::Step s;
  odb_SequenceFrame frames_;
  odb_HistoryRegionRepository histories_;
};

class odb_StepRepository {
 public:
  explicit odb_StepRepository(const std::vector<memory::Step>& steps) {
    for (const memory::Step& step : steps) steps_.emplace_back(step);
  }
  const odb_Step& operator[](const odb_String& key) const {
    for (const odb_Step& step : steps_) {
      if (step.name() == key) return step;
    }
    odb_throwMissingKey(key);
  }
  const std::vector<odb_Step>& inOrder() const { return steps_; }

 private:
  std::vector<odb_Step> steps_;
};

class odb_StepRepositoryIT {
 public:
  explicit odb_StepRepositoryIT(const odb_StepRepository& steps) {
    for (const odb_Step& step : steps.inOrder()) keys_.push_back(step.name());
  }
  void first() { at_ = 0; }
  void next() { ++at_; }
  bool isDone() const { return at_ == keys_.size(); }
  const odb_String& currentKey() const { return keys_[at_]; }

 private:
  std::vector<odb_String> keys_;
  std::size_t at_ = 0;
};

class odb_DiscreteEntity {
 public:
  odb_DiscreteEntity(const memory::Entity& entity)
      : name_(entity.name), elementSets_(repository(entity.elementSets)), nodeSets_(repository(entity.nodeSets)) {}
  odb_String name() const { return odb_String(name_); }
  const odb_SetRepository& elementSets(bool) const { return elementSets_; }
  const odb_SetRepository& nodeSets(bool) const { return nodeSets_; }

 private:
  static odb_SetRepository repository(const std::vector<std::string>& names) {
    std::map<odb_String, odb_Set> sets;
    for (const std::string& name : names) sets.emplace(odb_String(name), odb_Set(name));
    return odb_SetRepository(std::move(sets));
  }

  std::string name_;
  odb_SetRepository elementSets_;
  odb_SetRepository nodeSets_;
};

using odb_Part = odb_DiscreteEntity;
using odb_Instance = odb_DiscreteEntity;
using odb_PartRepository = odb_Repository<odb_String, odb_Part>;
using odb_InstanceRepository = odb_Repository<odb_String, odb_Instance>;

inline odb_InstanceRepository entityRepository(const std::vector<memory::Entity>& entities) {
  std::map<odb_String, odb_DiscreteEntity> nodes;
  for (const memory::Entity& entity : entities) nodes.emplace(odb_String(entity.name), odb_DiscreteEntity(entity));
  return odb_InstanceRepository(std::move(nodes));
}

class odb_Assembly : public odb_DiscreteEntity {
 public:
  odb_Assembly(const memory::Entity& entity, const std::vector<memory::Entity>& instances)
      : odb_DiscreteEntity(entity), instances_(entityRepository(instances)) {}
  const odb_InstanceRepository& instances() const { return instances_; }

 private:
  odb_InstanceRepository instances_;
};

struct odb_SectorDefinition {
  odb_SequenceSequenceFloat symmetryAxis() const {
    ++*reads;
    return {};
  }
  int* reads;
};

class odb_Odb {
 public:
  explicit odb_Odb(memory::Database& database)
      : d(&database),
        assembly_(database.assembly, database.instances),
        parts_(entityRepository(database.parts)),
        steps_(database.steps) {}
  odb_String name() const { return odb_String(d->name); }
  const odb_Assembly& rootAssembly() const { return assembly_; }
  const odb_PartRepository& parts() const { return parts_; }
  odb_StepRepository& steps() const { return steps_; }
  bool hasSectorDefinition() const { return d->hasSector; }
  odb_SectorDefinition sectorDefinition() const { return {&d->sectorReads}; }
  void close() {}

 private:
  memory::Database* d;
  odb_Assembly assembly_;
  odb_PartRepository parts_;
  mutable odb_StepRepository steps_;
};

// What the driver needs besides; no test opens a file here.
inline void odb_initializeAPI() {}
inline void odb_finalizeAPI() {}
inline bool isUpgradeRequiredForOdb(const odb_String&) { return false; }
inline void upgradeOdb(const odb_String&, const odb_String&) {}
odb_Odb& openOdb(const odb_String& path, bool readOnly, bool internal);
