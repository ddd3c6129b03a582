#include "report/quantities.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "kernels/kernels.h"

namespace report {

namespace {

// In the order of kernels::InvariantColumns.
struct InvariantName {
  odbstore::Invariant code;
  std::string_view name;
};
constexpr std::array<InvariantName, 9> kInvariants = {{
    {odbstore::Invariant::tresca, "tresca"},
    {odbstore::Invariant::press, "press"},
    {odbstore::Invariant::inv3, "inv3"},
    {odbstore::Invariant::maxPrincipal, "maxprincipal"},
    {odbstore::Invariant::midPrincipal, "midprincipal"},
    {odbstore::Invariant::minPrincipal, "minprincipal"},
    {odbstore::Invariant::maxInPlanePrincipal, "maxinplaneprincipal"},
    {odbstore::Invariant::minInPlanePrincipal, "mininplane_principal"},
    {odbstore::Invariant::outOfPlanePrincipal, "outofplane_principal"},
}};
constexpr std::array<std::string_view, 3> kDirections = {"1", "2", "3"};

std::span<const std::string_view> componentsOf(FieldKind kind) {
  if (kind == FieldKind::tensor) return odbstore::kTensorComponents;
  if (kind == FieldKind::vector) return kDirections;
  return {};
}

// Whether a column of the label is the component: "S11" is "11", "U2" is "2".
bool isOf(const std::string& label, std::string_view component) { return label.ends_with(component); }

bool wants(const std::vector<std::string>& quantities, std::string_view name) {
  return std::find(quantities.begin(), quantities.end(), name) != quantities.end();
}

using Take = std::function<void(const std::string&, std::span<const float>)>;

void deriveInvariants(bool hasHalvedShear, std::span<const float> rows, const std::vector<std::string>& quantities,
                      const Take& take) {
  const auto isWanted = [&](const InvariantName& invariant) { return wants(quantities, invariant.name); };
  if (std::none_of(kInvariants.begin(), kInvariants.end(), isWanted)) return;
  const std::size_t count = rows.size() / kernels::kTensorWidth;
  std::vector<float> numbers(kInvariants.size() * count);
  const auto column = [&](std::size_t i) { return numbers.data() + i * count; };
  kernels::InvariantColumns columns = {column(0), column(1), column(2), column(3), column(4),
                                       column(5), column(6), column(7), column(8)};
  kernels::invariants(rows.data(), count, kernels::kTensorWidth, hasHalvedShear, &columns);
  for (std::size_t i = 0; i < kInvariants.size(); ++i)
    if (isWanted(kInvariants[i])) take(std::string(kInvariants[i].name), {column(i), count});
}

void deriveComponents(FieldKind kind, std::span<const float> rows, const Take& take) {
  const std::span<const std::string_view> components = componentsOf(kind);
  std::vector<float> numbers(rows.size() / components.size());
  for (std::size_t c = 0; c < components.size(); ++c) {
    for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = rows[i * components.size() + c];
    take(std::string(components[c]), numbers);
  }
}

}  // namespace

FieldKind kindOf(int type) {
  if (odbstore::isTensorType(type)) return FieldKind::tensor;
  return type == static_cast<int>(odbstore::FieldType::vector) ? FieldKind::vector : FieldKind::scalar;
}

std::size_t widthOf(FieldKind kind) { return std::max<std::size_t>(1, componentsOf(kind).size()); }

std::vector<std::string> quantitiesOf(FieldKind kind, const std::vector<int>& validInvariants) {
  if (kind == FieldKind::scalar) return {""};
  std::vector<std::string> names = {kind == FieldKind::tensor ? "mises" : "mag"};
  for (const std::string_view component : componentsOf(kind)) names.emplace_back(component);
  if (kind == FieldKind::vector) return names;
  for (const InvariantName& invariant : kInvariants) {
    const auto code = static_cast<int>(invariant.code);
    const bool isValid = std::find(validInvariants.begin(), validInvariants.end(), code) != validInvariants.end();
    if (isValid) names.emplace_back(invariant.name);
  }
  return names;
}

std::vector<int> columnsOf(FieldKind kind, const odbstore::StoredBlock& block) {
  if (kind == FieldKind::scalar) return {block.width() > 0 ? 0 : -1};
  std::vector<std::string> labels = block.componentLabels();
  if (labels.empty() && kind == FieldKind::tensor) labels = odbstore::defaultTensorLabels(block.type());
  if (labels.empty()) labels.assign(kDirections.begin(), kDirections.end());
  labels.resize(std::min(labels.size(), static_cast<std::size_t>(block.width())));
  std::vector<int> columns;
  for (const std::string_view component : componentsOf(kind)) {
    const auto found =
        std::find_if(labels.begin(), labels.end(), [&](const std::string& l) { return isOf(l, component); });
    columns.push_back(found == labels.end() ? -1 : static_cast<int>(found - labels.begin()));
  }
  return columns;
}

void derive(FieldKind kind, bool hasHalvedShear, std::span<const float> rows,
            const std::vector<std::string>& quantities, const Take& take) {
  if (kind == FieldKind::scalar) return take("", rows);
  const std::size_t width = widthOf(kind);
  std::vector<float> numbers(rows.size() / width);
  if (kind == FieldKind::vector) {
    kernels::lengths(rows.data(), numbers.size(), static_cast<int>(width), numbers.data());
    take("mag", numbers);
  } else {
    kernels::best().equivalents(rows.data(), numbers.size(), static_cast<int>(width), hasHalvedShear, numbers.data());
    take("mises", numbers);
    deriveInvariants(hasHalvedShear, rows, quantities, take);
  }
  deriveComponents(kind, rows, take);
}

}  // namespace report
