// Plain structures that a test fills, and the values and blocks of field outputs over them.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "odbaccess/odb_Enum.h"
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
  odb_FieldValue value(int i) const { return at(i); }
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
  void invariants(std::span<const odb_InvariantEnum> codes, int from, int count, float* out) const {
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
    for (const odb_InvariantEnum code : codes) {
      copy(members.at(code), from, count, out);
      out += count;
    }
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
  // No value stands for several places.
  void forEachDistinctRun(const std::function<void(odb_FieldValueRun&)>& take) const { forEachRun(take); }

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
  void forEachStoredTile(const std::function<void(const odb_FieldBulkTile&)>& take) const { forEachTile(take); }

 private:
  memory::Block b;
  std::vector<int> labels_;
};

using odb_SequenceFieldBulkData = odb_Sequence<odb_FieldBulkData>;
