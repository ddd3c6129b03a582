#include "importers/exodus/exodus_model.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>
#include <optional>

#include "base/label_index.h"
#include "importers/exodus/element_shapes.h"

namespace importers::exodus {

namespace {

constexpr std::int64_t kLargestLabel = std::numeric_limits<int>::max();

std::string numbered(const char* name, std::size_t number) { return name + std::to_string(number); }

// A count that memory in proportion to the file allows.
std::size_t checkedCount(const ExodusFile& file, const char* dimension) {
  const std::uint64_t count = file.length(dimension);
  if (count > file.mostBytes() / sizeof(double) || count > static_cast<std::uint64_t>(kLargestLabel)) {
    throw ImportError(file.place(dimension), fmt::format("{} is too large for a file of that size", count));
  }
  return count;
}

// Of blocks or sets: each has a number in the file.
std::size_t checkedEntities(const ExodusFile& file, const char* dimension) {
  const std::uint64_t count = file.length(dimension);
  constexpr std::uint64_t kFew = 1024;
  if (count > kFew + file.bytes() / sizeof(std::int32_t)) {
    throw ImportError(file.place(dimension), fmt::format("{} is too large for a file of that size", count));
  }
  return count;
}

std::vector<int> countedLabels(std::size_t count) {
  std::vector<int> labels(count);
  std::iota(labels.begin(), labels.end(), 1);
  return labels;
}

// Why numbers cannot be labels; empty for good ones.
std::string problemOf(const std::vector<std::int64_t>& map, std::size_t count) {
  if (map.size() != count) return fmt::format("there are {} of them", map.size());
  const auto bad = std::find_if(map.begin(), map.end(), [](std::int64_t n) { return n < 1 || n > kLargestLabel; });
  if (bad != map.end()) return fmt::format("one is {}", *bad);
  const std::optional<int> twice = base::LabelIndex(std::vector<int>(map.begin(), map.end())).repeated();
  return twice ? fmt::format("{} comes twice", *twice) : "";
}

std::vector<int> labelsOf(ExodusFile& file, const char* map, std::size_t count, const char* things,
                          const WarningSink& warn) {
  if (file.variable(map) == nullptr) return countedLabels(count);
  const std::vector<std::int64_t> numbers = file.integers(map);
  const std::string problem = problemOf(numbers, count);
  if (problem.empty()) return {numbers.begin(), numbers.end()};
  warn(base::warning(
      file.place(map),
      fmt::format("the numbers of {} cannot be used, because {}; they are counted from 1", things, problem)));
  return countedLabels(count);
}

// The names of blocks or sets: their own, else made of their ids.
std::vector<std::string> entityNames(ExodusFile& file, const char* names, const char* ids, const char* word,
                                     std::size_t count) {
  std::vector<std::string> own = file.names(names);
  const std::vector<std::int64_t> numbers = file.integers(ids);
  own.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    if (!own[i].empty()) continue;
    own[i] = fmt::format("{}_{}", word, i < numbers.size() ? numbers[i] : static_cast<std::int64_t>(i + 1));
  }
  return own;
}

std::string trimmed(std::string text) {
  text.resize(text.find_last_not_of(' ') + 1);
  return text;
}

void readConnectivity(ExodusFile& file, const Model& model, Block& block, const WarningSink& warn) {
  const std::string name = numbered("connect", block.number);
  const netcdf::Variable* const variable = file.variable(name);
  if (variable == nullptr) return;
  if (const netcdf::Attribute* const type = attributeOf(variable->attributes, "elem_type")) {
    block.type = trimmed(type->text);
  }
  const std::vector<std::uint64_t> shape = file.shapeOf(*variable);
  if (shape.size() != 2 || shape[0] != block.elements) {
    warn(base::warning(
        file.place(name),
        fmt::format("elements of {} have no fixed number of nodes; they are not in the mesh", block.name)));
    return;
  }
  const std::vector<std::int64_t> places = file.integers(name);
  const auto bad = std::find_if(places.begin(), places.end(), [&](std::int64_t place) {
    return place < 1 || static_cast<std::uint64_t>(place) > model.nodeLabels.size();
  });
  if (bad != places.end()) {
    throw ImportError(file.place(name), fmt::format("an element has the node number {}, which is not there", *bad));
  }
  block.nodesPerElement = shape[1];
  block.connectivity.assign(places.begin(), places.end());
}

void readBlocks(ExodusFile& file, Model& model, const WarningSink& warn) {
  const std::size_t count = checkedEntities(file, "num_el_blk");
  const std::vector<std::string> names = entityNames(file, "eb_names", "eb_prop1", "block", count);
  std::size_t first = 0;
  for (std::size_t i = 0; i < count; ++i) {
    Block block;
    block.name = names[i];
    block.number = i + 1;
    block.first = first;
    block.elements = file.length(numbered("num_el_in_blk", i + 1));
    if (block.elements > model.elementLabels.size() - first) {
      throw ImportError(file.place(numbered("num_el_in_blk", i + 1)), "the blocks have more elements than the model");
    }
    first += block.elements;
    readConnectivity(file, model, block, warn);
    model.blocks.push_back(std::move(block));
  }
}

// What the file calls the sets of a kind.
struct SetNames {
  SetKind kind;
  const char* count;
  const char* names;
  const char* ids;
  const char* word;
  const char* members;
  const char* sides;
};

constexpr SetNames kNodeSets = {SetKind::nodes, "num_node_sets", "ns_names", "ns_prop1", "nodeset", "node_ns", nullptr};
constexpr SetNames kSideSets = {SetKind::sides, "num_side_sets", "ss_names", "ss_prop1",
                                "sideset",      "elem_ss",       "side_ss"};
constexpr SetNames kElementSets = {SetKind::elements, "num_elem_sets", "els_names", "els_prop1",
                                   "elemset",         "elem_els",      nullptr};

std::vector<Set> readSets(ExodusFile& file, const SetNames& what, std::size_t entities, const WarningSink& warn) {
  const std::size_t count = checkedEntities(file, what.count);
  const std::vector<std::string> names = entityNames(file, what.names, what.ids, what.word, count);
  std::vector<Set> sets;
  for (std::size_t i = 0; i < count; ++i) {
    Set set = {what.kind, names[i], i + 1, {}, {}};
    const std::string variable = numbered(what.members, i + 1);
    const std::vector<std::int64_t> members = file.integers(variable);
    std::vector<std::int64_t> sides;
    if (what.sides != nullptr) sides = file.integers(numbered(what.sides, i + 1));
    if (what.sides != nullptr && sides.size() != members.size()) {
      throw ImportError(file.place(variable), fmt::format("the side set {} has {} elements and {} sides", set.name,
                                                          members.size(), sides.size()));
    }
    std::size_t missing = 0;
    for (std::size_t m = 0; m < members.size(); ++m) {
      const bool isThere = members[m] >= 1 && static_cast<std::uint64_t>(members[m]) <= entities;
      // Rows of variables of a set go by its members, so that those that are not there keep their places.
      set.members.push_back(isThere ? static_cast<int>(members[m] - 1) : -1);
      missing += isThere ? 0 : 1;
      if (!sides.empty()) set.sides.push_back(static_cast<int>(std::clamp<std::int64_t>(sides[m], 0, kLargestLabel)));
    }
    if (missing > 0) {
      warn(base::warning(
          file.place(variable),
          fmt::format("{} members of the set {} are not in the model; they are left out", missing, set.name)));
    }
    sets.push_back(std::move(set));
  }
  return sets;
}

std::string producerOf(ExodusFile& file) {
  // Four texts a record: program, version, date, time.
  const std::vector<std::string> texts = file.names("qa_records");
  return texts.size() < 4 ? "" : trimmed(texts[texts.size() - 4] + " " + texts[texts.size() - 3]);
}

std::vector<int> eachOnce(std::vector<int> labels) {
  std::sort(labels.begin(), labels.end());
  labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
  return labels;
}

// Blocks without elements stand before the one that begins at the same place.
const Block* blockOf(const Model& model, int element) {
  const auto place = static_cast<std::size_t>(element);
  const auto after = std::upper_bound(model.blocks.begin(), model.blocks.end(), place,
                                      [](std::size_t wanted, const Block& block) { return wanted < block.first; });
  if (after == model.blocks.begin()) return nullptr;
  const Block& block = *(after - 1);
  return place < block.first + block.elements ? &block : nullptr;
}

std::vector<int> labelsOfMembers(const std::vector<int>& members, const std::vector<int>& labels) {
  std::vector<int> found;
  for (const int member : members) {
    if (member >= 0) found.push_back(labels[static_cast<std::size_t>(member)]);
  }
  return eachOnce(std::move(found));
}

// Few bytes can name large elements many times.
void requireRoom(const ExodusFile& file, std::size_t labels, const std::string& object) {
  if (labels <= file.mostBytes() / sizeof(int)) return;
  throw ImportError(file.place(object), "has more members than a file of that size can hold");
}

// The nodes of the sides of a set; counts the sides that are not known.
std::vector<int> nodesOfSides(const Set& set, const Model& model, const ExodusFile& file, std::size_t& unknown) {
  std::vector<int> nodes;
  for (std::size_t i = 0; i < set.members.size(); ++i) {
    const Block* const block = set.members[i] < 0 ? nullptr : blockOf(model, set.members[i]);
    if (block == nullptr || !block->hasMesh()) continue;
    const std::vector<std::size_t> places =
        nodesOfSide(block->type, block->nodesPerElement, model.dimensions, static_cast<std::size_t>(set.sides[i]));
    unknown += places.empty() ? 1 : 0;
    requireRoom(file, nodes.size() + places.size(), set.name);
    const std::size_t row = (static_cast<std::size_t>(set.members[i]) - block->first) * block->nodesPerElement;
    for (const std::size_t place : places) {
      nodes.push_back(model.nodeLabels[static_cast<std::size_t>(block->connectivity[row + place] - 1)]);
    }
  }
  return eachOnce(std::move(nodes));
}

std::vector<int> elementsOf(const Block& block, const Model& model) {
  const auto begin = model.elementLabels.begin() + static_cast<std::ptrdiff_t>(block.first);
  return {begin, begin + static_cast<std::ptrdiff_t>(block.elements)};
}

void addSet(std::vector<NamedMembers>& to, const Set& set, const Model& model, ExodusFile& file,
            const WarningSink& warn) {
  if (set.kind == SetKind::nodes) {
    to.push_back({odbstore::SetKind::node, set.name, false, labelsOfMembers(set.members, model.nodeLabels)});
    return;
  }
  const bool isSurface = set.kind == SetKind::sides;
  to.push_back({odbstore::SetKind::element, set.name, isSurface, labelsOfMembers(set.members, model.elementLabels)});
  if (!isSurface) return;
  std::size_t unknown = 0;
  to.push_back({odbstore::SetKind::node, set.name, true, nodesOfSides(set, model, file, unknown)});
  if (unknown == 0) return;
  warn(base::warning(
      file.place(numbered("side_ss", set.number)),
      fmt::format("{} sides of the side set {} are not known; their nodes are left out", unknown, set.name)));
}

// Codes of what an assembly is made of.
enum class AssemblyOf : int { blocks = 1, nodeSets = 2, sideSets = 3, elementSets = 10, assemblies = 16 };

struct Assembly {
  std::string name;
  std::int64_t id = 0;
  int kind = 0;
  std::vector<std::int64_t> members;  // ids
};

std::vector<Assembly> assembliesOf(ExodusFile& file) {
  std::vector<Assembly> assemblies;
  for (const netcdf::Variable& variable : file.description().variables) {
    if (!variable.name.starts_with("assembly_entity")) continue;
    Assembly assembly;
    const netcdf::Attribute* const name = attributeOf(variable.attributes, "_name");
    const netcdf::Attribute* const id = attributeOf(variable.attributes, "_id");
    const netcdf::Attribute* const kind = attributeOf(variable.attributes, "_type");
    if (id != nullptr && !id->numbers.empty()) assembly.id = static_cast<std::int64_t>(id->numbers[0]);
    if (kind != nullptr && !kind->numbers.empty()) assembly.kind = static_cast<int>(kind->numbers[0]);
    if (name != nullptr) assembly.name = trimmed(name->text);
    if (assembly.name.empty()) assembly.name = fmt::format("assembly_{}", assembly.id);
    assembly.members = file.integers(variable.name);
    assemblies.push_back(std::move(assembly));
  }
  return assemblies;
}

// Puts the members of assemblies together.
class Assembler {
 public:
  Assembler(ExodusFile& file, const Model& model) : file_(file), model_(model), all_(assembliesOf(file)) {}

  std::vector<NamedMembers> sets() {
    std::vector<NamedMembers> sets;
    if (all_.empty()) return sets;
    for (const char* const ids : {"eb_prop1", "ns_prop1", "ss_prop1", "els_prop1"}) ids_.push_back(file_.integers(ids));
    for (std::size_t i = 0; i < all_.size(); ++i) {
      elements_.clear();
      nodes_.clear();
      collect(i);
      if (!elements_.empty()) sets.push_back({odbstore::SetKind::element, all_[i].name, false, eachOnce(elements_)});
      if (!nodes_.empty()) sets.push_back({odbstore::SetKind::node, all_[i].name, false, eachOnce(nodes_)});
    }
    return sets;
  }

 private:
  // Assemblies may be of assemblies, and in a damaged file of themselves.
  void collect(std::size_t root) {
    std::vector<bool> isSeen(all_.size(), false);
    std::vector<std::size_t> due = {root};
    while (!due.empty()) {
      const std::size_t place = due.back();
      due.pop_back();
      if (isSeen[place]) continue;
      isSeen[place] = true;
      const Assembly& assembly = all_[place];
      for (const std::int64_t id : assembly.members) {
        requireRoom(file_, ++steps_ + elements_.size() + nodes_.size(), assembly.name);
        if (assembly.kind != static_cast<int>(AssemblyOf::assemblies)) {
          take(assembly.kind, id);
          continue;
        }
        for (std::size_t i = 0; i < all_.size(); ++i) {
          if (all_[i].id == id) due.push_back(i);
        }
      }
    }
  }

  void take(int kind, std::int64_t id) {
    if (kind == static_cast<int>(AssemblyOf::blocks)) {
      const std::size_t place = placeOf(id, ids_[0]);
      if (place < model_.blocks.size()) append(elements_, elementsOf(model_.blocks[place], model_));
    } else if (kind == static_cast<int>(AssemblyOf::nodeSets)) {
      takeSet(placeOf(id, ids_[1]), model_.nodeSets, model_.nodeLabels, nodes_);
    } else if (kind == static_cast<int>(AssemblyOf::sideSets)) {
      takeSet(placeOf(id, ids_[2]), model_.sideSets, model_.elementLabels, elements_);
    } else if (kind == static_cast<int>(AssemblyOf::elementSets)) {
      takeSet(placeOf(id, ids_[3]), model_.elementSets, model_.elementLabels, elements_);
    }
  }

  static std::size_t placeOf(std::int64_t id, const std::vector<std::int64_t>& ids) {
    return static_cast<std::size_t>(std::find(ids.begin(), ids.end(), id) - ids.begin());
  }

  static void takeSet(std::size_t place, const std::vector<Set>& sets, const std::vector<int>& labels,
                      std::vector<int>& to) {
    if (place < sets.size()) append(to, labelsOfMembers(sets[place].members, labels));
  }

  static void append(std::vector<int>& to, const std::vector<int>& labels) {
    to.insert(to.end(), labels.begin(), labels.end());
  }

  ExodusFile& file_;
  const Model& model_;
  std::vector<Assembly> all_;
  std::vector<std::vector<std::int64_t>> ids_;  // of blocks, node, side and element sets
  std::vector<int> elements_;
  std::vector<int> nodes_;
  std::size_t steps_ = 0;
};

}  // namespace

Model readModel(ExodusFile& file, const WarningSink& warn) {
  Model model;
  model.title = trimmed(file.text("title"));
  model.producer = producerOf(file);
  model.dimensions = file.length("num_dim");
  if (file.description().dimension("num_nodes") == nullptr) {
    throw ImportError(file.place("num_nodes"), "is not there, and so there is no model");
  }
  model.nodeLabels = labelsOf(file, "node_num_map", checkedCount(file, "num_nodes"), "nodes", warn);
  model.elementLabels = labelsOf(file, "elem_num_map", checkedCount(file, "num_elem"), "elements", warn);
  readBlocks(file, model, warn);
  model.nodeSets = readSets(file, kNodeSets, model.nodeLabels.size(), warn);
  model.sideSets = readSets(file, kSideSets, model.elementLabels.size(), warn);
  model.elementSets = readSets(file, kElementSets, model.elementLabels.size(), warn);
  return model;
}

std::vector<double> coordinatesOf(ExodusFile& file, const Model& model, const WarningSink& warn) {
  constexpr std::array kAxes = {"coordx", "coordy", "coordz"};
  const std::size_t nodes = model.nodeLabels.size();
  std::vector<double> coordinates(3 * nodes, 0.0);
  const std::vector<double> packed = file.reals("coord");  // [dimensions, nodes] in files of old
  for (std::size_t axis = 0; axis < std::min<std::size_t>(model.dimensions, kAxes.size()); ++axis) {
    std::vector<double> along = file.reals(kAxes[axis]);
    if (along.empty() && packed.size() >= (axis + 1) * nodes) {
      along.assign(packed.begin() + static_cast<std::ptrdiff_t>(axis * nodes),
                   packed.begin() + static_cast<std::ptrdiff_t>((axis + 1) * nodes));
    }
    if (along.size() != nodes) {
      warn(base::warning(file.place(kAxes[axis]), "not every node has a coordinate; those of the others are 0"));
      along.resize(nodes);
    }
    for (std::size_t i = 0; i < nodes; ++i) coordinates[3 * i + axis] = along[i];
  }
  return coordinates;
}

ElementGroup groupOf(const Block& block, const Model& model) {
  ElementGroup group = {typeName(block.type, block.nodesPerElement), static_cast<int>(block.nodesPerElement), true,
                        elementsOf(block, model), block.connectivity};
  for (int& node : group.connectivity) node = model.nodeLabels[static_cast<std::size_t>(node - 1)];
  return group;
}

std::vector<NamedMembers> namedMembersOf(ExodusFile& file, const Model& model, const WarningSink& warn) {
  std::vector<NamedMembers> sets;
  for (const Block& block : model.blocks) {
    sets.push_back({odbstore::SetKind::element, block.name, false, elementsOf(block, model)});
  }
  for (const auto* const some : {&model.elementSets, &model.nodeSets, &model.sideSets}) {
    for (const Set& set : *some) addSet(sets, set, model, file, warn);
  }
  for (NamedMembers& set : Assembler(file, model).sets()) sets.push_back(std::move(set));
  return sets;
}

}  // namespace importers::exodus
