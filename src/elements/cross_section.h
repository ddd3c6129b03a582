// Cross sections of beams and trusses as points that carry area.
#pragma once

#include <array>
#include <vector>

namespace elements {

// A point of a section at n1 along its first and n2 along its second direction, measured from the line of the nodes.
struct SectionPoint {
  double n1 = 0.0;
  double n2 = 0.0;
  double area = 0.0;
};

// Together the points have the area, the centroid and the second moments of area of the section. The middle of a
// section lies on the line of the nodes.
using CrossSection = std::vector<SectionPoint>;

// `a` along the first direction, `b` along the second.
CrossSection rectangle(double a, double b);

// Of the diameters a and b.
CrossSection ellipse(double a, double b);

CrossSection pipe(double outerRadius, double wall);

// A rectangle around a hole; the walls lie at the positive and negative ends of the directions, in the order +1, +2,
// -1, -2.
CrossSection box(double a, double b, const std::array<double, 4>& walls);

// Any section with its second moments of area ∫ n1² dA, ∫ n2² dA and ∫ n1 n2 dA.
CrossSection generalSection(double area, double i11, double i22, double i12);

// A square: what the solver makes of a truss of that area.
CrossSection square(double area);

CrossSection shifted(CrossSection section, double n1, double n2);

}  // namespace elements
