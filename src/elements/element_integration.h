// The mass of single elements, by numerical integration over their shape functions.
//
// Every element is a map x(r, s, t) from its cell; its mass is the sum of ρ |det ∂x/∂(r,s,t)| over the points of a
// Gauss rule. Shells and beams are solids whose nodes carry directions in which the thickness or the section extends
// (Ahmad, Irons & Zienkiewicz, Int. J. Num. Meth. Eng. 2 (1970) 419), as the solver makes them.
#pragma once

#include <array>
#include <span>

#include "elements/cross_section.h"
#include "elements/moments.h"
#include "elements/shape_functions.h"
#include "elements/vector3.h"

namespace elements {

// A layer of a shell between two heights over the surface of the nodes, along the normal.
struct Layer {
  double bottom = 0.0;
  double top = 0.0;
  double density = 0.0;
};

// Factors at each node for the height of layers, or for the two directions of a section: thicknesses that vary from
// node to node. Empty for 1 everywhere.
using Thicknesses = std::span<const std::array<double, 2>>;

// In all of these `nodes`, and thicknesses, have as many entries as `shape` has nodes.

void addSolid(Moments& moments, Shape shape, std::span<const Vector3> nodes, double density);

void addShell(Moments& moments, Shape shape, std::span<const Vector3> nodes, std::span<const Layer> layers,
              Thicknesses thicknesses = {});

// An element in the x-y plane, its thickness in equal parts on both sides.
void addPlane(Moments& moments, Shape shape, std::span<const Vector3> nodes, double thickness, double density);

// An element in the x-y plane that goes all the way around the y axis.
void addAxisymmetric(Moments& moments, Shape shape, std::span<const Vector3> nodes, double density);

// `direction` is the first one of the section, made normal to the axis; the second is axis x first. Where it lies along
// the axis, or is zero, any normal one takes its place.
void addBeam(Moments& moments, Shape shape, std::span<const Vector3> nodes, const CrossSection& section,
             const Vector3& direction, double density, Thicknesses thicknesses = {});

}  // namespace elements
