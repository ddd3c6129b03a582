#include "inspect/record_endings.h"

#include <algorithm>

#include "reduce/extremes_records.h"

namespace inspect {

namespace {

constexpr std::size_t kSeparatorLength = 2;  // "__" before a quantity

::Extreme tokenOf(Extreme extreme) {
  switch (extreme) {
    case Extreme::min:
      return ::Extreme::min;
    case Extreme::engineeringMax:
      return ::Extreme::engineeringMax;
    case Extreme::engineeringMin:
      return ::Extreme::engineeringMin;
    default:
      return ::Extreme::max;
  }
}

// "__max": the token of a record without the tab behind it.
std::string_view textOf(Extreme extreme) {
  std::string_view token = extremeToken(tokenOf(extreme));
  token.remove_suffix(1);
  return token;
}

class EndingList {
 public:
  explicit EndingList(const ExtractionSwitches& switches) : switches_(switches) {}

  void add(std::string_view quantity, Extreme extreme) { addAs(quantity, extreme, extreme); }
  // Goes by the name of another extreme.
  void addAs(std::string_view quantity, Extreme extreme, Extreme named) {
    if (extreme == Extreme::engineeringMax && !switches_.engineeringMax) return;
    if (extreme == Extreme::engineeringMin && !switches_.engineeringMin) return;
    std::string text(quantity);
    text += textOf(named);
    endings_.push_back({std::move(text), quantity.substr(std::min(kSeparatorLength, quantity.size())), extreme});
  }
  void addAll(std::string_view quantity) {
    for (const Extreme extreme : {Extreme::max, Extreme::min, Extreme::engineeringMax, Extreme::engineeringMin}) {
      add(quantity, extreme);
    }
  }

  std::vector<Ending> take() { return std::move(endings_); }

 private:
  const ExtractionSwitches& switches_;
  std::vector<Ending> endings_;
};

void addVector(EndingList& list, const ExtractionSwitches& switches) {
  list.addAll("__mag");
  if (!switches.fieldComponents) return;
  for (const std::string_view component : kVectorQuantities) {
    list.add(component, Extreme::max);
    list.add(component, Extreme::min);
  }
  for (const Extreme extreme : {Extreme::engineeringMax, Extreme::engineeringMin}) {
    for (const std::string_view component : kVectorQuantities) list.add(component, extreme);
  }
}

void addTensor(EndingList& list, int type, const Components& components, Reduction reduction,
               const ExtractionSwitches& switches) {
  const bool isSurfaceOfSet = reduction == Reduction::set && type == odb_Enum::tensor2dSurface;
  for (const Extreme extreme : {Extreme::max, Extreme::min, Extreme::engineeringMax}) list.add("__mises", extreme);
  list.addAs("__mises", Extreme::engineeringMin, isSurfaceOfSet ? Extreme::min : Extreme::engineeringMin);
  for (std::size_t c = 0; switches.fieldComponents && c < kTensorQuantities.size(); ++c) {
    if (components.present[c]) list.addAll(kTensorQuantities[c]);
  }
}

}  // namespace

std::string_view wordOf(Extreme extreme) {
  return extreme == Extreme::none ? std::string_view() : textOf(extreme).substr(kSeparatorLength);
}

void Components::addExact(const std::vector<std::string>& labels) {
  for (const std::string& label : labels) {
    for (std::size_t c = 0; c < kTensorComponents.size(); ++c) present[c] = present[c] || label == kTensorComponents[c];
  }
}

void Components::addEndings(const std::vector<std::string>& labels) {
  constexpr std::size_t kKept = 2;
  std::vector<std::string> endings;
  for (const std::string& label : labels) endings.push_back(label.substr(label.size() - std::min(kKept, label.size())));
  addExact(endings);
}

std::vector<Ending> endingsOf(int type, const Components& components, Reduction reduction,
                              const ExtractionSwitches& switches) {
  EndingList list(switches);
  if (odb_isTensor(type)) {
    addTensor(list, type, components, reduction, switches);
  } else if (type == odb_Enum::vector) {
    addVector(list, switches);
  } else if (type == odb_Enum::scalar || reduction != Reduction::set) {
    list.addAll("");
  }
  return list.take();
}

std::vector<Ending> invariantEndings(const std::vector<int>& valid, const ExtractionSwitches& switches) {
  EndingList list(switches);
  for (const InvariantQuantity& invariant : kInvariantQuantities) {
    if (std::find(valid.begin(), valid.end(), static_cast<int>(invariant.code)) == valid.end()) continue;
    list.addAll(invariant.quantity);
  }
  return list.take();
}

const std::vector<std::string_view>& quantityTexts() {
  static const std::vector<std::string_view> texts = [] {
    std::vector<std::string_view> all = {"", "__mises", "__mag"};
    all.insert(all.end(), kTensorQuantities.begin(), kTensorQuantities.end());
    all.insert(all.end(), kVectorQuantities.begin(), kVectorQuantities.end());
    for (const InvariantQuantity& invariant : kInvariantQuantities) all.push_back(invariant.quantity);
    return all;
  }();
  return texts;
}

}  // namespace inspect
