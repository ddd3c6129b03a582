#include "importers/calculix/deck/deck_sections.h"

#include <algorithm>
#include <utility>

#include "importers/calculix/deck/deck_sets.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

// The number in the i-th item of a line, nothing if the line ends before or the item is empty.
std::optional<double> numberAt(std::string_view line, std::size_t i, const LineReader& lines) {
  const std::vector<std::string_view> items = dataItems(line);
  if (i >= items.size() || items[i].empty()) return std::nullopt;
  return realFrom(items[i], lines);
}

double parameterNumber(const Keyword& keyword, const std::string& name, const LineReader& lines) {
  const std::optional<std::string> text = keyword.value(name);
  return text ? realFrom(*text, lines) : 0.0;
}

std::string profileName(const Keyword& keyword) {
  const std::string given = upperCased(keyword.value("SECTION").value_or(""));
  for (const std::string name : {"RECT", "CIRC", "PIPE", "BOX", "GENERAL"}) {
    if (given.starts_with(name)) return name;
  }
  return storableText(given);
}

}  // namespace

bool DeckSections::start(const Keyword& keyword, const LineReader& lines) {
  data_ = Data::none;
  lineOfData_ = 0;
  if (keyword.name == "MATERIAL") {
    material_ = nullptr;
    const std::optional<std::string> name = keyword.value("NAME");
    if (name) material_ = &(materials_[canonicalName(*name)] = {storableText(*name), std::nullopt, {}});
    return true;
  }
  if (keyword.name == "DENSITY") {
    if (material_ != nullptr) data_ = Data::density;
    return true;
  }
  if (keyword.name == "SOLIDSECTION") return startSection(keyword, SectionKind::solid, lines);
  if (keyword.name == "SHELLSECTION") return startSection(keyword, SectionKind::shell, lines);
  if (keyword.name == "MEMBRANESECTION") return startSection(keyword, SectionKind::shell, lines);
  if (keyword.name == "BEAMSECTION") return startSection(keyword, SectionKind::beam, lines);
  if (keyword.name == "BEAMGENERALSECTION") return startSection(keyword, SectionKind::beam, lines);
  if (keyword.name == "NODALTHICKNESS") {
    data_ = Data::nodalThickness;
    return true;
  }
  if (keyword.name == "MASS") return startSection(keyword, SectionKind::pointMass, lines);
  return false;
}

bool DeckSections::startSection(const Keyword& keyword, SectionKind kind, const LineReader& lines) {
  const std::optional<std::string> set = keyword.spelled("ELSET");
  if (!set) return true;
  DeckSection section;
  section.kind = kind;
  section.place = lines.place();
  section.elementSet = canonicalName(*set);
  section.setName = storableText(withoutQuotes(*set));
  section.hasOrientation = keyword.value("ORIENTATION").has_value();
  section.material = canonicalName(keyword.value("MATERIAL").value_or(""));
  section.hasNodalThickness = keyword.has("NODALTHICKNESS");
  if (kind == SectionKind::solid) data_ = Data::solid;
  if (kind == SectionKind::pointMass) data_ = Data::pointMass;
  if (kind == SectionKind::shell) {
    section.isComposite = keyword.has("COMPOSITE");
    data_ = section.isComposite ? Data::composite : Data::shell;
    if (withNumbers_) section.offset[0] = parameterNumber(keyword, "OFFSET", lines);
  }
  if (kind == SectionKind::beam) {
    data_ = Data::beam;
    section.profile = profileName(keyword);
    if (withNumbers_) {
      section.offset = {parameterNumber(keyword, "OFFSET1", lines), parameterNumber(keyword, "OFFSET2", lines)};
    }
  }
  sections_.push_back(std::move(section));
  return true;
}

void DeckSections::takeData(std::string_view line, const LineReader& lines) {
  const bool isFirst = lineOfData_++ == 0;
  if (!withNumbers_ && data_ != Data::composite) return;
  switch (data_) {
    case Data::density:
      takeDensity(line, lines);
      break;
    case Data::solid:
    case Data::pointMass:
      if (isFirst) sections_.back().size = numberAt(line, 0, lines);
      break;
    case Data::shell:
      if (const auto thickness = numberAt(line, 0, lines); isFirst && thickness) {
        sections_.back().layers.push_back({*thickness, sections_.back().material});
      }
      break;
    case Data::composite:
      takeLayer(line, lines);
      break;
    case Data::beam:
      takeBeam(line, lines);
      break;
    case Data::nodalThickness:
      takeNodalThickness(line, lines);
      break;
    case Data::none:
      break;
  }
}

void DeckSections::takeDensity(std::string_view line, const LineReader& lines) {
  if (lineOfData_ == 1) {
    material_->density = numberAt(line, 0, lines);
  } else if (lineOfData_ == 2) {
    material_->placeOfSecondDensity = lines.place();
  }
}

// Thickness, an empty item, material, orientation.
void DeckSections::takeLayer(std::string_view line, const LineReader& lines) {
  const std::vector<std::string_view> items = dataItems(line);
  if (items.front().empty()) return;
  const std::optional<double> thickness = withNumbers_ ? numberAt(line, 0, lines) : 0.0;
  if (items.size() > 3 && !items[3].empty()) sections_.back().hasOrientation = true;
  sections_.back().layers.push_back({*thickness, items.size() > 2 ? canonicalName(items[2]) : std::string()});
}

void DeckSections::takeNodalThickness(std::string_view line, const LineReader& lines) {
  const double first = numberAt(line, 1, lines).value_or(0.0);
  nodalThicknesses_.push_back({std::string(dataItems(line).front()), {first, numberAt(line, 2, lines).value_or(0.0)}});
}

// The dimensions, then the first direction.
void DeckSections::takeBeam(std::string_view line, const LineReader& lines) {
  DeckSection& section = sections_.back();
  if (lineOfData_ == 1) {
    for (const std::string_view item : dataItems(line)) {
      section.dimensions.push_back(item.empty() ? 0.0 : realFrom(item, lines));
    }
  } else if (lineOfData_ == 2) {
    for (std::size_t k = 0; k < 3; ++k) section.direction[k] = numberAt(line, k, lines).value_or(0.0);
  }
}

}  // namespace importers::calculix
