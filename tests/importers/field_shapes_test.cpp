// Components that become vectors and tensors.
#include "importers/run/field_shapes.h"

#include <gmock/gmock.h>

#include <limits>
#include <sstream>
#include <string>

namespace importers {
namespace {

using odbstore::FieldType;

// The names in a line; "name@place" says what one exists on.
std::vector<NamedComponent> componentsOf(const std::string& line) {
  std::vector<NamedComponent> components;
  std::istringstream words(line);
  for (std::string word; words >> word;) {
    const std::size_t at = word.find('@');
    components.push_back({word.substr(0, at), at == std::string::npos ? "" : word.substr(at)});
  }
  return components;
}

// Each field with the names of its components, "0" for those that are not there, mirrors after a bar.
std::string textOf(const std::vector<ShapedField>& fields, const std::vector<NamedComponent>& components) {
  std::string text;
  const auto name = [&](std::size_t place) {
    return place == kNoComponent ? std::string("0") : components[place].name;
  };
  for (const ShapedField& field : fields) {
    if (!text.empty()) text += "; ";
    text += field.name;
    if (field.type == FieldType::scalar) continue;
    text += field.type == FieldType::vector ? ":" : field.type == FieldType::tensor3dFull ? "::" : "::2";
    for (const std::size_t column : field.columns) text += " " + name(column);
    if (!field.hasMirrors()) continue;
    text += " |";
    for (const std::size_t mirror : field.mirrors) text += " " + name(mirror);
  }
  return text;
}

struct Case {
  const char* what;
  const char* names;
  const char* fields;
  const char* plane = nullptr;  // in two dimensions, where that is another result
};

constexpr Case kCases[] = {
    {"a vector", "disp_x disp_y disp_z", "disp: disp_x disp_y disp_z"},
    {"in any order and case, without a blank", "T dispZ DISPX DispY", "T; disp: DISPX DispY dispZ"},
    {"a tensor, as some write it", "s_xx s_yy s_zz s_xy s_yz s_zx", "s:: s_xx s_yy s_zz s_xy s_zx s_yz"},
    {"and others", "sxx syy szz sxy sxz syz", "s:: sxx syy szz sxy sxz syz"},
    {"lower triangle", "s_xx s_yx s_yy s_zx s_zy s_zz", "s:: s_xx s_yy s_zz s_yx s_zx s_zy"},
    {"nine components", "g_xx g_xy g_xz g_yx g_yy g_yz g_zx g_zy g_zz",
     "g:: g_xx g_yy g_zz g_xy g_xz g_yz | g_yx g_zx g_zy"},
    {"seven components are ambiguous", "g_xx g_xy g_xz g_yx g_yy g_yz g_zz",
     "g_xx; g_xy; g_xz; g_yx; g_yy; g_yz; g_zz"},
    {"two of a vector", "v_x v_y", "v_x; v_y", "v: v_x v_y 0"},
    {"the wrong two", "v_x v_z", "v_x; v_z"},
    {"a vector out of the plane", "v_x v_y v_z", "v: v_x v_y v_z"},
    {"four of a tensor", "s_xx s_yy s_zz s_xy", "s_xx; s_yy; s_zz; s_xy", "s::2 s_xx s_yy s_zz s_xy"},
    {"three of a tensor", "s_xy s_xx s_yy", "s_xy; s_xx; s_yy", "s::2 s_xx s_yy 0 s_xy"},
    {"four of a matrix", "s_xx s_xy s_yx s_yy", "s_xx; s_xy; s_yx; s_yy", "s::2 s_xx s_yy 0 s_xy | s_yx 0 0"},
    {"a lone component", "disp_x T", "disp_x; T"},
    {"a component twice", "v_x v_y v_z V_X", "v_x; v_y; v_z; V_X"},
    {"both ways of writing", "v_x v_y v_z vx vy vz", "v_x; v_y; v_z; vx; vy; vz"},
    {"a name that a scalar has", "v_x v_y v_z V", "v_x; v_y; v_z; V"},
    {"a vector and a tensor of one name", "s_x s_y s_z s_xx s_yy s_zz s_xy s_yz s_zx",
     "s_x; s_y; s_z; s_xx; s_yy; s_zz; s_xy; s_yz; s_zx"},
    {"on other blocks", "v_x@1 v_y@1 v_z@2", "v_x; v_y; v_z"},
    {"on the same blocks", "v_x@1 v_y@1 v_z@1", "v: v_x v_y v_z"},
    {"a row of a tensor is no vector", "s_xx s_xy s_xz", "s_xx; s_xy; s_xz"},
    {"a vector whose name ends in an axis", "flux_x_x flux_x_y flux_x_z", "flux_x: flux_x_x flux_x_y flux_x_z"},
    {"the same without a blank", "VelocityX VelocityY VelocityZ", "Velocity: VelocityX VelocityY VelocityZ"},
    {"nothing but the ending", "x y z _x _y _z xx yy zz xy yz zx", "x; y; z; _x; _y; _z; xx; yy; zz; xy; yz; zx"},
    {"numbers", "v_1 v_2 v_3", "v_1; v_2; v_3"},
    {"nothing", "", ""},
};

TEST(FieldShapes, GoByTheNamesOfComponents) {
  for (const Case& one : kCases) {
    const std::vector<NamedComponent> components = componentsOf(one.names);
    EXPECT_EQ(textOf(shapeFields(components, {}, false), components), one.fields) << one.what;
    EXPECT_EQ(textOf(shapeFields(components, {}, true), components), one.plane ? one.plane : one.fields)
        << one.what << ", in a plane";
  }
}

TEST(FieldShapes, NumbersCountOnlyOnRequest) {
  const ShapeChoice numbers = {true, true};
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"v_1 v_2 v_3 w_x w_y w_z", "v: v_1 v_2 v_3; w: w_x w_y w_z"},
      {"s11 s22 s33 s12 s23 s13", "s:: s11 s22 s33 s12 s13 s23"},
      {"sdv_1 sdv_2 sdv_3 sdv_4", "sdv_1; sdv_2; sdv_3; sdv_4"},
      {"a10 a11 a12 a13", "a10; a11; a12; a13"},
  };
  for (const auto& [names, fields] : cases) {
    const std::vector<NamedComponent> components = componentsOf(names);
    EXPECT_EQ(textOf(shapeFields(components, numbers, false), components), fields);
  }
  const std::vector<NamedComponent> unasked = componentsOf("v_1 v_2 v_3");
  EXPECT_EQ(textOf(shapeFields(unasked, {true, false}, false), unasked), "v_1; v_2; v_3");
}

TEST(FieldShapes, EverythingCanBeLeftAsItIs) {
  const std::vector<NamedComponent> components = componentsOf("v_x v_y v_z");
  EXPECT_EQ(textOf(shapeFields(components, {false, false}, false), components), "v_x; v_y; v_z");
}

TEST(FieldShapes, MatricesThatAreNotSymmetricFallApart) {
  const std::vector<NamedComponent> components = componentsOf("T g_xx g_xy g_xz g_yx g_yy g_yz g_zx g_zy g_zz");
  const std::vector<ShapedField> fields = shapeFields(components, {}, false);
  EXPECT_EQ(textOf(scalarsOf(fields.at(1), components), components),
            "g_xx; g_xy; g_xz; g_yx; g_yy; g_yz; g_zx; g_zy; g_zz");
}

TEST(FieldShapes, EqualComponentsDifferByRoundingAtMost) {
  constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> values = {1000.0, 0.0, kNoNumber};
  EXPECT_TRUE(areEqual(values, std::vector<double>{1000.009, 0.009, kNoNumber}));
  EXPECT_FALSE(areEqual(values, std::vector<double>{1000.0, 0.011, kNoNumber}));
  EXPECT_FALSE(areEqual(values, std::vector<double>{1000.0, 0.0, 0.0}));
}

}  // namespace
}  // namespace importers
