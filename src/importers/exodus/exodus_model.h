// The mesh of an Exodus file, and the names and members of what it groups.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "importers/exodus/exodus_file.h"
#include "importers/run/element_groups.h"
#include "odbstore/schema.h"

namespace importers::exodus {

struct Block {
  std::string name;
  std::size_t number = 0;  // in the names of variables, from 1
  std::string type;        // as the file calls it
  std::size_t first = 0;   // its first element among all
  std::size_t elements = 0;
  std::size_t nodesPerElement = 0;
  std::vector<int> connectivity;  // [elements, nodesPerElement], places of nodes from 1; empty without a mesh
  bool hasMesh() const { return !connectivity.empty(); }
};

enum class SetKind { nodes, sides, elements };

// Members are places from 0, each as often as the file has it.
struct Set {
  SetKind kind = SetKind::nodes;
  std::string name;
  std::size_t number = 0;
  std::vector<int> members;  // nodes or elements
  std::vector<int> sides;    // of each member of a set of sides
};

// What becomes a set of the database.
struct NamedMembers {
  odbstore::SetKind kind = odbstore::SetKind::node;
  std::string name;
  bool isOfSurface = false;
  std::vector<int> labels;  // each once
};

struct Model {
  std::string title;
  std::string producer;
  std::size_t dimensions = 0;
  std::vector<int> nodeLabels;
  std::vector<int> elementLabels;
  std::vector<Block> blocks;
  std::vector<Set> nodeSets;
  std::vector<Set> sideSets;
  std::vector<Set> elementSets;

  bool isPlane() const { return dimensions == 2; }
};

// Reads everything but the coordinates. Warns of what cannot be used: numbers of nodes and elements that are not unique
// or not positive (they are counted then), members that are not there.
Model readModel(ExodusFile& file, const WarningSink& warn);

// [nodes, 3].
std::vector<double> coordinatesOf(ExodusFile& file, const Model& model, const WarningSink& warn);

// The elements of a block, with the labels of nodes.
ElementGroup groupOf(const Block& block, const Model& model);

// Blocks, sets and assemblies.
std::vector<NamedMembers> namedMembersOf(ExodusFile& file, const Model& model, const WarningSink& warn);

}  // namespace importers::exodus
