// Decks whose mass is known, of meshes made by bending a block of elements.
#pragma once

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "importers/calculix/deck/mass_properties.h"
#include "importers_test.h"

namespace importers::calculix {

using Point = std::array<double, 3>;
using Bend = std::function<Point(const Point&)>;

// The nodes of an element on a grid of half elements: corners, then middles of edges.
using Cells = std::vector<std::vector<std::array<int, 3>>>;

inline std::vector<std::array<int, 3>> withMiddles(std::vector<std::array<int, 3>> corners,
                                                   const std::vector<std::pair<int, int>>& edges) {
  for (const auto& [first, last] : edges) {
    const auto a = corners[static_cast<std::size_t>(first)];
    const auto b = corners[static_cast<std::size_t>(last)];
    corners.push_back({(a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2});
  }
  return corners;
}

inline const std::vector<std::pair<int, int>> kBrickEdges = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                                                             {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
inline const std::vector<std::pair<int, int>> kWedgeEdges = {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5},
                                                             {5, 3}, {0, 3}, {1, 4}, {2, 5}};
inline const std::vector<std::pair<int, int>> kTetrahedronEdges = {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}};
inline const std::vector<std::pair<int, int>> kQuadEdges = {{0, 1}, {1, 2}, {2, 3}, {3, 0}};
inline const std::vector<std::pair<int, int>> kTriangleEdges = {{0, 1}, {1, 2}, {2, 0}};

// The elements of the type in a cube of the grid: bricks one, wedges two, tetrahedra the six along its diagonal; of
// surfaces those of its lower side.
inline Cells cellsOf(const std::string& type) {
  const auto corner = [](int i) { return std::array<int, 3>{i & 1 ? 2 : 0, i & 2 ? 2 : 0, i & 4 ? 2 : 0}; };
  const auto list = [&](std::initializer_list<int> corners) {
    std::vector<std::array<int, 3>> all;
    for (const int i : corners) all.push_back(corner(i));
    return all;
  };
  const bool hasMiddles = type.find("20") != std::string::npos || type.find("15") != std::string::npos ||
                          type.find("10") != std::string::npos || type.back() == '8' || type.back() == '6';
  const auto finish = [&](Cells cells, const std::vector<std::pair<int, int>>& edges, bool isQuadratic) {
    if (isQuadratic) {
      for (auto& cell : cells) cell = withMiddles(cell, edges);
    }
    return cells;
  };
  if (type.starts_with("C3D4") || type.starts_with("C3D10")) {
    return finish({list({0, 1, 3, 7}), list({0, 3, 2, 7}), list({0, 2, 6, 7}), list({0, 6, 4, 7}), list({0, 4, 5, 7}),
                   list({0, 5, 1, 7})},
                  kTetrahedronEdges, hasMiddles);
  }
  if (type.starts_with("C3D6") || type.starts_with("C3D15")) {
    return finish({list({0, 1, 3, 4, 5, 7}), list({0, 3, 2, 4, 7, 6})}, kWedgeEdges, type == "C3D15");
  }
  if (type.starts_with("C3D")) return finish({list({0, 1, 3, 2, 4, 5, 7, 6})}, kBrickEdges, type.starts_with("C3D20"));
  const char nodes = type.back();
  if (nodes == '3' || nodes == '6') return finish({list({0, 1, 3}), list({0, 3, 2})}, kTriangleEdges, nodes == '6');
  return finish({list({0, 1, 3, 2})}, kQuadEdges, nodes == '8');
}

// *NODE and *ELEMENT for a block of such cubes from 0 to 1 in every direction, each node moved by `bend`. The elements
// are in the set E.
inline std::string blockMesh(const std::string& type, const std::array<int, 3>& count, const Bend& bend) {
  std::map<std::array<int, 3>, int> labels;
  std::string nodes = "*NODE\n";
  std::string elements = "*ELEMENT,TYPE=" + type + ",ELSET=E\n";
  int element = 0;
  const Cells cells = cellsOf(type);
  for (int c = 0; c < count[0] * count[1] * count[2]; ++c) {
    const std::array<int, 3> at = {c % count[0], c / count[0] % count[1], c / (count[0] * count[1])};
    for (const auto& cell : cells) {
      elements += std::to_string(++element);
      for (const auto& place : cell) {
        const std::array<int, 3> key = {2 * at[0] + place[0], 2 * at[1] + place[1], 2 * at[2] + place[2]};
        const auto [known, isNew] = labels.try_emplace(key, static_cast<int>(labels.size()) + 1);
        if (isNew) {
          const Point p = bend({key[0] / (2.0 * count[0]), key[1] / (2.0 * count[1]), key[2] / (2.0 * count[2])});
          nodes += fmt::format("{}, {:.17g}, {:.17g}, {:.17g}\n", known->second, p[0], p[1], p[2]);
        }
        elements += fmt::format(",{}{}", &place == &cell[9] ? "\n" : "", known->second);
      }
      elements += "\n";
    }
  }
  return nodes + elements;
}

inline std::string material(double density) { return fmt::format("*MATERIAL,NAME=M\n*DENSITY\n{}\n", density); }

// Checked number by number against the size of the whole tensor.
inline void expectTensor(const std::array<double, 6>& found, const std::array<double, 6>& expected, double relative) {
  double size = 0.0;
  for (const double value : expected) size = std::max(size, std::abs(value));
  for (std::size_t k = 0; k < 6; ++k) EXPECT_NEAR(found[k], expected[k], relative * size) << "component " << k;
}

// The expected inertia about the origin follows from that about the centre (Steiner).
inline void expectMass(const StepMass& found, double mass, const Point& centre, const std::array<double, 6>& inertia,
                       double relative) {
  EXPECT_NEAR(found.mass, mass, relative * mass);
  const double size = std::max(1.0, std::hypot(centre[0], centre[1], centre[2]));
  for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(found.centre[k], centre[k], relative * size) << "coordinate " << k;
  expectTensor(found.inertiaAboutCentre, inertia, relative);
  const auto [x, y, z] = centre;
  expectTensor(
      found.inertiaAboutOrigin,
      {inertia[0] + mass * (y * y + z * z), inertia[1] + mass * (x * x + z * z), inertia[2] + mass * (x * x + y * y),
       inertia[3] - mass * x * y, inertia[4] - mass * x * z, inertia[5] - mass * y * z},
      relative);
}

class MassTest : public testing::Test {
 protected:
  std::optional<StepMass> massOfText(const std::string& text) {
    const WarningSink warn = [this](const base::Diagnostic& said) { warnings_.push_back(base::textOf(said)); };
    return massOf(readDeck(writeText(directory_, "job.inp", text), warn, {DeckDetail::mass}), warn);
  }

  // For a deck that has one and nothing to warn of.
  StepMass mass(const std::string& text) {
    const std::optional<StepMass> found = massOfText(text);
    EXPECT_TRUE(warnings_.empty()) << warnings_.front();
    return found.value();
  }

  TemporaryDirectory directory_;
  std::vector<std::string> warnings_;
};

}  // namespace importers::calculix
