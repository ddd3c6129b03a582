// Vectors of three numbers, as far as the integration over elements needs them.
#pragma once

#include <array>
#include <cmath>

namespace elements {

using Vector3 = std::array<double, 3>;

constexpr Vector3 operator+(const Vector3& a, const Vector3& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
constexpr Vector3 operator-(const Vector3& a, const Vector3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
constexpr Vector3 operator*(double f, const Vector3& a) { return {f * a[0], f * a[1], f * a[2]}; }

constexpr double dot(const Vector3& a, const Vector3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

constexpr Vector3 cross(const Vector3& a, const Vector3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

constexpr double determinant(const Vector3& a, const Vector3& b, const Vector3& c) { return dot(a, cross(b, c)); }

inline double length(const Vector3& a) { return std::sqrt(dot(a, a)); }

// Of length 1; the zero vector stays what it is.
inline Vector3 unit(const Vector3& a) {
  const double size = length(a);
  return size > 0.0 ? (1.0 / size) * a : a;
}

}  // namespace elements
