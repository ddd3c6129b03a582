// Materials and sections of a deck, as far as mass, layers and axes depend on them.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "elements/vector3.h"
#include "importers/calculix/deck/deck_keyword.h"
#include "importers/input/diagnostics.h"
#include "importers/input/line_reader.h"

namespace importers::calculix {

struct DeckMaterial {
  std::string name;               // as the deck spells it
  std::optional<double> density;  // the first one
  // The place of the second density of a material whose density depends on temperature.
  SourcePlace placeOfSecondDensity;
};

struct DeckLayer {
  double thickness = 0.0;
  std::string material;  // canonical name
};

enum class SectionKind { solid, shell, beam, pointMass };

// *SOLID SECTION, *SHELL SECTION and *MEMBRANE SECTION, *BEAM SECTION, *MASS.
struct DeckSection {
  SectionKind kind = SectionKind::solid;
  SourcePlace place;
  std::string elementSet;  // canonical name
  std::string setName;     // as the deck spells it
  std::string material;    // canonical name; empty for layers and point masses
  // Solid: the thickness of plane elements, the area of trusses. Point mass: the mass of each element.
  std::optional<double> size;
  // Shell, from the lower side up. Empty without a thickness.
  std::vector<DeckLayer> layers;
  bool isComposite = false;     // whether the deck lists layers
  bool hasOrientation = false;  // of its own or of one of its layers
  // Of the line or surface of the nodes from the middle, in parts of the thickness: shells have one, beams two.
  std::array<double, 2> offset{};
  // Beam: "RECT", "CIRC", "PIPE", "BOX", "GENERAL" or what else the deck asks for, and the numbers under it.
  std::string profile;
  std::vector<double> dimensions;
  elements::Vector3 direction = {0, 0, -1};
  // Whether thicknesses are given under *NODAL THICKNESS.
  bool hasNodalThickness = false;
};

// A line under *NODAL THICKNESS: shells use the first one, beams both.
struct DeckNodalThickness {
  std::string member;  // a label or the name of a set
  std::array<double, 2> thicknesses{};
};

// Collects them while a deck is read.
class DeckSections {
 public:
  // Without numbers, which serve mass alone, there are only the sets, the orientations and how many layers a shell has.
  explicit DeckSections(bool withNumbers) : withNumbers_(withNumbers) {}

  // Takes a keyword that is one of these. False for any other, which has no data here. A material or section without a
  // name is ignored: the solver would not run such a deck.
  bool start(const Keyword& keyword, const LineReader& lines);
  // A data line under such a keyword. A malformed number is an ImportError.
  void takeData(std::string_view line, const LineReader& lines);

  // By canonical name.
  std::map<std::string, DeckMaterial> finishMaterials() { return std::move(materials_); }
  // In the order of the deck; for an element in the sets of several the last one counts.
  std::vector<DeckSection> finishSections() { return std::move(sections_); }
  // In the order of the deck; the last one of a node counts.
  std::vector<DeckNodalThickness> finishNodalThicknesses() { return std::move(nodalThicknesses_); }

 private:
  enum class Data { none, density, solid, shell, composite, beam, pointMass, nodalThickness };

  bool startSection(const Keyword& keyword, SectionKind kind, const LineReader& lines);
  void takeDensity(std::string_view line, const LineReader& lines);
  void takeLayer(std::string_view line, const LineReader& lines);
  void takeNodalThickness(std::string_view line, const LineReader& lines);
  void takeBeam(std::string_view line, const LineReader& lines);

  bool withNumbers_;
  std::map<std::string, DeckMaterial> materials_;
  std::vector<DeckSection> sections_;
  std::vector<DeckNodalThickness> nodalThicknesses_;
  DeckMaterial* material_ = nullptr;
  Data data_ = Data::none;
  int lineOfData_ = 0;  // under the keyword, from 0
};

}  // namespace importers::calculix
