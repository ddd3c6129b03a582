#include "netcdf/description.h"

#include <algorithm>

#include "netcdf/packing.h"

namespace netcdf {

namespace {

template <typename Item>
const Item* named(const std::vector<Item>& items, std::string_view name) {
  const auto found = std::find_if(items.begin(), items.end(), [&](const Item& item) { return item.name == name; });
  return found == items.end() ? nullptr : &*found;
}

// A number of items that the bytes left can hold.
std::size_t countFrom(Unpacker& from) {
  const auto count = from.get<std::uint64_t>();
  if (count > from.left()) throw std::runtime_error("more items than bytes");
  return count;
}

void put(Packer& to, const std::vector<Attribute>& attributes) {
  to.put(std::uint64_t{attributes.size()});
  for (const Attribute& attribute : attributes) {
    to.putText(attribute.name);
    to.putText(attribute.text);
    to.put(std::uint64_t{attribute.numbers.size()});
    for (const double number : attribute.numbers) to.put(number);
  }
}

std::vector<Attribute> attributesFrom(Unpacker& from) {
  std::vector<Attribute> attributes(countFrom(from));
  for (Attribute& attribute : attributes) {
    attribute.name = from.getText();
    attribute.text = from.getText();
    attribute.numbers.resize(countFrom(from));
    for (double& number : attribute.numbers) number = from.get<double>();
  }
  return attributes;
}

std::vector<std::uint64_t> numbersFrom(Unpacker& from) {
  std::vector<std::uint64_t> numbers(countFrom(from));
  for (std::uint64_t& number : numbers) number = from.get<std::uint64_t>();
  return numbers;
}

Kind kindFrom(Unpacker& from) {
  const auto kind = from.get<Kind>();
  if (kind > Kind::other) throw std::runtime_error("an unknown kind of values");
  return kind;
}

}  // namespace

const Dimension* Description::dimension(std::string_view name) const { return named(dimensions, name); }

const Variable* Description::variable(std::string_view name) const { return named(variables, name); }

const Attribute* attributeOf(const std::vector<Attribute>& attributes, std::string_view name) {
  return named(attributes, name);
}

std::string packed(const Description& description) {
  Packer to;
  to.putText(description.form);
  to.put(std::uint64_t{description.dimensions.size()});
  for (const Dimension& dimension : description.dimensions) {
    to.putText(dimension.name);
    to.put(dimension.length);
  }
  put(to, description.attributes);
  to.put(std::uint64_t{description.variables.size()});
  for (const Variable& variable : description.variables) {
    to.putText(variable.name);
    to.put(variable.kind);
    to.put(std::uint64_t{variable.dimensions.size()});
    for (const std::size_t dimension : variable.dimensions) to.put(std::uint64_t{dimension});
    put(to, variable.attributes);
    to.put(variable.hasRecords);
  }
  to.put(description.completeRecords);
  return to.take();
}

Description unpacked(std::string_view bytes) {
  Unpacker from(bytes);
  Description description;
  description.form = from.getText();
  description.dimensions.resize(countFrom(from));
  for (Dimension& dimension : description.dimensions) {
    dimension.name = from.getText();
    dimension.length = from.get<std::uint64_t>();
  }
  description.attributes = attributesFrom(from);
  description.variables.resize(countFrom(from));
  for (Variable& variable : description.variables) {
    variable.name = from.getText();
    variable.kind = kindFrom(from);
    const std::vector<std::uint64_t> places = numbersFrom(from);
    variable.dimensions.assign(places.begin(), places.end());
    const bool isGood = std::all_of(places.begin(), places.end(),
                                    [&](std::uint64_t place) { return place < description.dimensions.size(); });
    if (!isGood) throw std::runtime_error("a dimension that is not there");
    variable.attributes = attributesFrom(from);
    variable.hasRecords = from.get<std::uint8_t>() != 0;
  }
  description.completeRecords = from.get<std::uint64_t>();
  return description;
}

std::string packed(const Part& part) {
  Packer to;
  to.put(part.variable);
  to.put(part.kind);
  for (const auto* const numbers : {&part.start, &part.count}) {
    to.put(std::uint64_t{numbers->size()});
    for (const std::uint64_t number : *numbers) to.put(number);
  }
  return to.take();
}

Part unpackedPart(std::string_view bytes) {
  Unpacker from(bytes);
  Part part;
  part.variable = from.get<std::uint64_t>();
  part.kind = kindFrom(from);
  part.start = numbersFrom(from);
  part.count = numbersFrom(from);
  return part;
}

}  // namespace netcdf
