// The access library once more, in memory: just what the extraction asks of it, over plain structures that a test
// fills. The extraction's folders compile against this header in place of the real one, which shows that they need
// nothing else.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "odbaccess/nex_Exception.h"
#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_Exception.h"
#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_String.h"

namespace memory {

// A row of a field output with whatever the library would derive from it.
struct Value {
  int type = odb_Enum::scalar;
  int precision = odb_Enum::singlePrecision;
  std::vector<float> floats;
  std::vector<double> doubles;
  float mises = 0, magnitude = 0, tresca = 0, press = 0, inv3 = 0;
  float maxPrincipal = 0, midPrincipal = 0, minPrincipal = 0;
  float maxInPlanePrincipal = 0, minInPlanePrincipal = 0, outOfPlanePrincipal = 0;
};

struct Block {
  int type = odb_Enum::scalar;
  int width = 1;
  std::vector<std::string> labels;
  std::vector<float> floats;
  std::vector<double> doubles;  // when not empty, the block is in double precision
  bool elementBased = false;
  std::vector<float> mises;  // one per row

  int rows() const { return static_cast<int>(floats.size() + doubles.size()) / width; }
};

struct Field {
  std::string name;
  std::string description;
  int type = odb_Enum::scalar;
  std::vector<std::string> labels;
  std::vector<odb_InvariantEnum> invariants;
  std::vector<Value> values;
  std::vector<Block> blocks;
  std::map<std::string, Field> subsets;  // by the name of the set
};

struct Frame {
  int increment = 0;
  std::string description;
  std::vector<Field> fields;
};

struct HistoryRegion {
  std::string name;
  std::string description;
  int node = -1;
  int element = -1;
  int integrationPoint = 0;
  int sectionPoint = 0;
  std::string set;
  std::map<std::string, std::vector<std::vector<float>>> outputs;
};

struct Step {
  std::string name;
  double mass = -1.0;
  std::vector<double> massCenter, inertiaAboutCenter, inertiaAboutOrigin;
  std::vector<HistoryRegion> histories;
  std::vector<Frame> frames;
};

struct Entity {
  std::string name;
  std::vector<std::string> elementSets, nodeSets;
};

struct Database {
  std::string name = "memory.odb";
  Entity assembly;
  std::vector<Entity> instances, parts;
  std::vector<Step> steps;
  bool hasSector = false;
  int sectorReads = 0;
};

}  // namespace memory

class odb_FieldValue {
 public:
  odb_FieldValue() = default;
  odb_FieldValue(memory::Value value) : v(std::move(value)) {}
  int type() const { return v.type; }
  int precision() const { return v.precision; }
  const float* floatData() const { return v.floats.data(); }
  const double* doubleData() const { return v.doubles.data(); }
  int dataCount() const { return static_cast<int>(std::max(v.floats.size(), v.doubles.size())); }
  float magnitude() const { return v.magnitude; }
  float mises() const { return v.mises; }
  float tresca() const { return v.tresca; }
  float press() const { return v.press; }
  float inv3() const { return v.inv3; }
  float maxPrincipal() const { return v.maxPrincipal; }
  float midPrincipal() const { return v.midPrincipal; }
  float minPrincipal() const { return v.minPrincipal; }
  float maxInPlanePrincipal() const { return v.maxInPlanePrincipal; }
  float minInPlanePrincipal() const { return v.minInPlanePrincipal; }
  float outOfPlanePrincipal() const { return v.outOfPlanePrincipal; }

 private:
  memory::Value v;
};

// Values of one type, precision and number of data, one after the other.
class odb_FieldValueRun {
 public:
  odb_FieldValueRun(const std::vector<memory::Value>& values, int first, int count)
      : v(values), first_(first), count_(count) {}
  int first() const { return first_; }
  int count() const { return count_; }
  int type() const { return at(0).type; }
  int precision() const { return at(0).precision; }
  int dataCount() const { return odb_FieldValue(at(0)).dataCount(); }
  const float* floatData(int from, int count) {
    floats_.clear();
    for (int i = 0; i < count; ++i)
      floats_.insert(floats_.end(), at(from + i).floats.begin(), at(from + i).floats.end());
    return floats_.data();
  }
  const double* doubleData(int from, int count) {
    doubles_.clear();
    for (int i = 0; i < count; ++i) {
      doubles_.insert(doubles_.end(), at(from + i).doubles.begin(), at(from + i).doubles.end());
    }
    return doubles_.data();
  }
  void magnitude(int from, int count, float* out) const { copy(&memory::Value::magnitude, from, count, out); }
  void mises(int from, int count, float* out) const { copy(&memory::Value::mises, from, count, out); }
  void invariant(odb_InvariantEnum code, int from, int count, float* out) const {
    static const std::map<int, float memory::Value::*> members = {
        {odb_Enum::maxPrincipal, &memory::Value::maxPrincipal},
        {odb_Enum::midPrincipal, &memory::Value::midPrincipal},
        {odb_Enum::minPrincipal, &memory::Value::minPrincipal},
        {odb_Enum::tresca, &memory::Value::tresca},
        {odb_Enum::press, &memory::Value::press},
        {odb_Enum::inv3, &memory::Value::inv3},
        {odb_Enum::maxInPlanePrincipal, &memory::Value::maxInPlanePrincipal},
        {odb_Enum::minInPlanePrincipal, &memory::Value::minInPlanePrincipal},
        {odb_Enum::outOfPlanePrincipal, &memory::Value::outOfPlanePrincipal}};
    copy(members.at(code), from, count, out);
  }

 private:
  const memory::Value& at(int i) const { return v[static_cast<std::size_t>(first_ + i)]; }
  void copy(float memory::Value::*member, int from, int count, float* out) const {
    for (int i = 0; i < count; ++i) out[i] = at(from + i).*member;
  }

  const std::vector<memory::Value>& v;
  int first_;
  int count_;
  std::vector<float> floats_;
  std::vector<double> doubles_;
};

class odb_SequenceFieldValue {
 public:
  odb_SequenceFieldValue() = default;
  explicit odb_SequenceFieldValue(std::vector<memory::Value> values) : v(std::move(values)) {}
  int size() const { return static_cast<int>(v.size()); }
  odb_FieldValue constGet(unsigned index) const { return v.at(index); }
  void forEachRun(const std::function<void(odb_FieldValueRun&)>& take) const {
    const auto isAlike = [&](std::size_t a, std::size_t b) {
      return v[a].type == v[b].type && v[a].precision == v[b].precision && v[a].floats.size() == v[b].floats.size() &&
             v[a].doubles.size() == v[b].doubles.size();
    };
    std::size_t end = 0;
    for (std::size_t first = 0; first < v.size(); first = end) {
      for (end = first + 1; end < v.size() && isAlike(first, end);) ++end;
      odb_FieldValueRun run(v, static_cast<int>(first), static_cast<int>(end - first));
      take(run);
    }
  }

 private:
  std::vector<memory::Value> v;
};

class odb_FieldBulkTile {
 public:
  odb_FieldBulkTile(const memory::Block& block, int first, int count) : b(block), first_(first), count_(count) {}
  int first() const { return first_; }
  int count() const { return count_; }
  const float* data() const { return b.doubles.empty() ? b.floats.data() + first_ * b.width : nullptr; }
  const double* dataDouble() const { return b.doubles.empty() ? nullptr : b.doubles.data() + first_ * b.width; }
  void mises(float* out) const { std::copy_n(b.mises.begin() + first_, count_, out); }
  void takeMises(float& max, float& min) const {
    for (int i = first_; i < first_ + count_; ++i) {
      const float value = b.mises[static_cast<std::size_t>(i)];
      if (value > max) max = value;
      if (value < min) min = value;
    }
  }

 private:
  const memory::Block& b;
  int first_;
  int count_;
};

class odb_FieldBulkData {
 public:
  explicit odb_FieldBulkData(memory::Block block) : b(std::move(block)), labels_(b.rows(), 1) {}
  int type() const { return b.type; }
  int precision() const { return b.doubles.empty() ? odb_Enum::singlePrecision : odb_Enum::doublePrecision; }
  int valueCount() const { return b.rows(); }
  int width() const { return b.width; }
  const float* data() const { return b.floats.data(); }
  const double* dataDouble() const { return b.doubles.data(); }
  odb_Sequence<odb_String> componentLabels() const {
    odb_Sequence<odb_String> labels;
    for (const std::string& label : b.labels) labels.append(odb_String(label));
    return labels;
  }
  int numberOfElements() const { return b.elementBased ? b.rows() : 0; }
  const int* elementLabels() const { return b.elementBased ? labels_.data() : nullptr; }
  const float* mises() const { return b.mises.data(); }
  // In tiles of few rows, so that every block of some length has several.
  void forEachTile(const std::function<void(const odb_FieldBulkTile&)>& take) const {
    constexpr int kTileRows = 37;
    for (int first = 0; first < b.rows(); first += kTileRows) {
      take(odb_FieldBulkTile(b, first, std::min(kTileRows, b.rows() - first)));
    }
  }

 private:
  memory::Block b;
  std::vector<int> labels_;
};

using odb_SequenceFieldBulkData = odb_Sequence<odb_FieldBulkData>;

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
