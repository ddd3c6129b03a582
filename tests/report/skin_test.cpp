#include "report/skin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "hand_made_meshes.h"
#include "report/cell_faces.h"
#include "report/feature_edges.h"
#include "report/surface.h"

namespace {

using inspect::CellType;
using meshes::cube;
using meshes::MeshMaker;
using meshes::squaresAlongX;

std::set<std::int32_t> cornersOf(const report::SkinFace& face) {
  return {face.nodes.begin(), face.nodes.begin() + face.corners};
}

std::multiset<std::set<std::int32_t>> cornersOf(const std::vector<report::SkinFace>& faces) {
  std::multiset<std::set<std::int32_t>> all;
  for (const report::SkinFace& face : faces) all.insert(cornersOf(face));
  return all;
}

// Reference elements with corners and middles of edges where VTK's documentation has them.
struct Reference {
  CellType type;
  std::vector<std::array<double, 3>> nodes;
  std::size_t faces;
  double area;  // of all faces
};

const double kSlanted = std::sqrt(2.0);

std::vector<Reference> references() {
  const auto middles = [](std::vector<std::array<double, 3>> nodes, const std::vector<std::pair<int, int>>& edges) {
    for (const auto& [a, b] : edges) {
      std::array<double, 3> middle{};
      for (std::size_t c = 0; c < 3; ++c)
        middle[c] = (nodes[static_cast<std::size_t>(a)][c] + nodes[static_cast<std::size_t>(b)][c]) / 2;
      nodes.push_back(middle);
    }
    return nodes;
  };
  const std::vector<std::array<double, 3>> tetrahedron = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  const std::vector<std::array<double, 3>> brick = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                                    {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
  const std::vector<std::array<double, 3>> wedge = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}};
  const std::vector<std::array<double, 3>> pyramid = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, 0.5}};
  return {
      {CellType::tetrahedron, tetrahedron, 4, 1.5 + std::sqrt(3.0) / 2},
      {CellType::quadraticTetrahedron, middles(tetrahedron, {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}), 4,
       1.5 + std::sqrt(3.0) / 2},
      {CellType::hexahedron, brick, 6, 6},
      {CellType::quadraticHexahedron,
       middles(brick, {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6}, {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}}),
       6, 6},
      {CellType::wedge, wedge, 5, 3 + kSlanted},
      {CellType::quadraticWedge,
       middles(wedge, {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}}), 5, 3 + kSlanted},
      {CellType::pyramid, pyramid, 5, 1 + kSlanted},
      {CellType::quadraticPyramid, middles(pyramid, {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}),
       5, 1 + kSlanted},
  };
}

double areaOf(const Reference& element, const report::CellFace& face) {
  std::array<double, 3> twice{};
  const auto& origin = element.nodes[face.places[0]];
  for (std::size_t i = 1; i + 1 < face.corners; ++i) {
    std::array<double, 3> a{};
    std::array<double, 3> b{};
    for (std::size_t c = 0; c < 3; ++c) {
      a[c] = element.nodes[face.places[i]][c] - origin[c];
      b[c] = element.nodes[face.places[i + 1]][c] - origin[c];
    }
    twice[0] += a[1] * b[2] - a[2] * b[1];
    twice[1] += a[2] * b[0] - a[0] * b[2];
    twice[2] += a[0] * b[1] - a[1] * b[0];
  }
  return std::hypot(twice[0], twice[1], twice[2]) / 2;
}

TEST(CellFaces, CloseTheElement) {
  for (const Reference& element : references()) {
    const auto faces = report::facesOf(element.type);
    ASSERT_EQ(faces.size(), element.faces);
    double area = 0;
    for (const report::CellFace& face : faces) area += areaOf(element, face);
    EXPECT_NEAR(area, element.area, 1e-12) << static_cast<int>(element.type);
    EXPECT_TRUE(report::isSolid(element.type));
  }
}

TEST(CellFaces, HaveTheMiddlesOfTheirEdgesBetweenTheirCorners) {
  int quadratic = 0;
  for (const Reference& element : references()) {
    for (const report::CellFace& face : report::facesOf(element.type)) {
      if (face.nodes == face.corners) continue;
      ++quadratic;
      ASSERT_EQ(face.nodes, 2 * face.corners);
      for (std::size_t i = 0; i < face.corners; ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
          const double middle =
              (element.nodes[face.places[i]][c] + element.nodes[face.places[(i + 1) % face.corners]][c]) / 2;
          EXPECT_EQ(element.nodes[face.places[face.corners + i]][c], middle) << static_cast<int>(element.type);
        }
      }
    }
  }
  EXPECT_GT(quadratic, 0);
}

TEST(Skin, OfOneCubeIsItsSixFaces) {
  const auto mesh = MeshMaker(squaresAlongX(2)).add(CellType::hexahedron, {cube(0)}).make();
  const report::Skin skin = report::skinOf(mesh, {});
  EXPECT_EQ(cornersOf(skin.outer),
            (std::multiset<std::set<std::int32_t>>{
                {0, 1, 2, 3}, {4, 5, 6, 7}, {0, 1, 4, 5}, {1, 2, 5, 6}, {2, 3, 6, 7}, {0, 3, 4, 7}}));
  EXPECT_TRUE(skin.inner.empty());
}

TEST(Skin, HasNoFaceThatTwoCubesShare) {
  const auto mesh = MeshMaker(squaresAlongX(3)).add(CellType::hexahedron, {cube(0), cube(4)}).make();
  const report::Skin skin = report::skinOf(mesh, {});
  EXPECT_EQ(skin.outer.size(), 10U);
  EXPECT_EQ(cornersOf(skin.outer).count({4, 5, 6, 7}), 0U);
}

TEST(Skin, HasFacesBetweenGroupsOnceForEach) {
  const auto mesh = MeshMaker(squaresAlongX(4)).add(CellType::hexahedron, {cube(0), cube(4), cube(8)}).make();
  const std::vector<std::uint32_t> groups = {0, 7, 7};
  const report::Skin skin = report::skinOf(mesh, groups);
  EXPECT_EQ(skin.outer.size(), 14U);
  ASSERT_EQ(skin.inner.size(), 2U);
  EXPECT_EQ(cornersOf(skin.inner[0]), (std::set<std::int32_t>{4, 5, 6, 7}));
  EXPECT_EQ(cornersOf(skin.inner[1]), (std::set<std::int32_t>{4, 5, 6, 7}));
  EXPECT_EQ(skin.inner[0].cell, 0U);
  EXPECT_EQ(skin.inner[1].cell, 1U);
}

TEST(Skin, KnowsFacesOfSeveralTypesByTheirCorners) {
  // A cube, and a pyramid on the cube's last square.
  auto points = squaresAlongX(2);
  points.push_back({1.5, 0.5, 0.5});
  const auto mesh =
      MeshMaker(points).add(CellType::hexahedron, {cube(0)}).add(CellType::pyramid, {{4, 5, 6, 7, 8}}).make();
  const report::Skin skin = report::skinOf(mesh, {});
  EXPECT_EQ(skin.outer.size(), 9U);
  EXPECT_EQ(cornersOf(skin.outer).count({4, 5, 6, 7}), 0U);
  EXPECT_EQ(cornersOf(skin.outer).count({4, 5, 8}), 1U);
}

TEST(Skin, TakesShellsAsTheyAreAndLinesApart) {
  const auto mesh = MeshMaker(squaresAlongX(2))
                        .add(CellType::quad, {{0, 1, 2, 3}})
                        .add(CellType::quadraticEdge, {{4, 5, 6}})
                        .add(CellType::vertex, {{7}})
                        .add(CellType::polyVertex, {{0, 1, 2, 3, 4}})
                        .make();
  const report::Skin skin = report::skinOf(mesh, {});
  ASSERT_EQ(skin.outer.size(), 1U);
  EXPECT_EQ(skin.outer[0].count, 4U);
  ASSERT_EQ(skin.lines.size(), 1U);
  EXPECT_EQ(skin.lines[0].nodes[2], 6);
  EXPECT_EQ(skin.lines[0].cell, 1U);
}

TEST(Skin, OfAMeshOfNothingIsEmpty) {
  const report::Skin skin = report::skinOf(inspect::ModelMesh(), {});
  EXPECT_TRUE(skin.outer.empty());
}

TEST(FeatureEdges, OfACubeAreItsTwelve) {
  const auto mesh = MeshMaker(squaresAlongX(2)).add(CellType::hexahedron, {cube(0)}).make();
  const report::Skin skin = report::skinOf(mesh, {});
  const std::vector<float> points(mesh.coordinates.begin(), mesh.coordinates.end());
  EXPECT_EQ(report::featureEdges(skin.outer, points, 35).size(), 24U);
}

TEST(FeatureEdges, OfTwoCubesInARowAreNotWhereTheyAreFlat) {
  const auto mesh = MeshMaker(squaresAlongX(3)).add(CellType::hexahedron, {cube(0), cube(4)}).make();
  const report::Skin skin = report::skinOf(mesh, {});
  const std::vector<float> points(mesh.coordinates.begin(), mesh.coordinates.end());
  const std::vector<std::int32_t> edges = report::featureEdges(skin.outer, points, 35);
  EXPECT_EQ(edges.size(), 2U * 16U);  // eight along the row, four at each end
  for (std::size_t i = 0; i < edges.size(); i += 2) EXPECT_FALSE(edges[i] / 4 == 1 && edges[i + 1] / 4 == 1);
}

TEST(FeatureEdges, DoNotDependOnWhichWayRoundShellsAre) {
  const auto points = squaresAlongX(3);
  for (const std::vector<std::int64_t>& second : {std::vector<std::int64_t>{4, 8, 9, 5}, {5, 9, 8, 4}}) {
    const auto mesh = MeshMaker(points).add(CellType::quad, {{0, 4, 5, 1}, second}).make();
    const report::Skin skin = report::skinOf(mesh, {});
    const std::vector<float> at(mesh.coordinates.begin(), mesh.coordinates.end());
    const std::vector<std::int32_t> edges = report::featureEdges(skin.outer, at, 35);
    EXPECT_EQ(edges, (std::vector<std::int32_t>{0, 1, 0, 4, 1, 5, 4, 8, 5, 9, 8, 9}));
  }
}

TEST(Groups, AreOfCellsThatAreInTheSameSets) {
  const std::vector<report::MeshSet> sets = {
      {"A", true, {0, 1}}, {"NODES", false, {0, 1, 2, 3}}, {"B", true, {1, 2}}, {"ALL", true, {0, 1, 2, 3}}};
  const std::vector<std::uint32_t> groups = report::groupsOf(5, sets);
  EXPECT_EQ(std::set<std::uint32_t>(groups.begin(), groups.end()).size(), 5U);
  EXPECT_EQ(report::groupsOf(3, std::vector<report::MeshSet>{{"A", true, {0, 2}}})[0],
            report::groupsOf(3, std::vector<report::MeshSet>{{"A", true, {0, 2}}})[2]);
}

TEST(Surface, DrawsQuadraticFacesWithTheirMiddles) {
  const Reference brick = references()[3];
  std::vector<std::int64_t> nodes(20);
  for (std::size_t i = 0; i < 20; ++i) nodes[i] = static_cast<std::int64_t>(i);
  const auto mesh = MeshMaker(brick.nodes).add(CellType::quadraticHexahedron, {nodes}).make();
  const report::Surface surface = report::surfaceOf(mesh, {});
  EXPECT_EQ(surface.points.size(), 20U);
  EXPECT_EQ(surface.triangles(), 36U);
  ASSERT_EQ(surface.faces.size(), 1U);
  EXPECT_EQ(surface.faces[0].nodes, 8U);
  EXPECT_EQ(surface.edges.size(), 2U * 24U);
}

TEST(Surface, LeavesNodesOutThatNoFaceHas) {
  std::vector<std::array<double, 3>> points = squaresAlongX(2);
  points.insert(points.begin(), {9, 9, 9});
  const auto mesh = MeshMaker(points).add(CellType::hexahedron, {cube(1)}).make();
  const report::Surface surface = report::surfaceOf(mesh, {});
  EXPECT_EQ(surface.points.size(), 8U);
  EXPECT_EQ(surface.vertexOf[0], -1);
  for (std::size_t v = 0; v < 8; ++v)
    EXPECT_EQ(surface.vertexOf[static_cast<std::size_t>(surface.points[v])], static_cast<std::int32_t>(v));
  for (const report::Surface::Faces& faces : surface.faces) {
    for (std::size_t face = 0; face < faces.elements.size(); ++face) {
      const auto first = faces.vertices.begin() + static_cast<std::ptrdiff_t>(face * faces.nodes);
      EXPECT_EQ(*first, *std::min_element(first, first + faces.corners));
    }
  }
}

}  // namespace
