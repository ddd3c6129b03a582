#include "kernels/kernels.h"

#include <array>

namespace kernels {

namespace plain {
extern const Kernels version;
}

#ifdef KOLVEX_X86_KERNELS
namespace avx2 {
extern const Kernels version;
}
namespace avx512 {
extern const Kernels version;
}
namespace avx512vbmi2 {
extern const Kernels version;
}
#endif

namespace {

struct Versions {
  std::array<const Kernels*, 4> found{};
  std::size_t count = 0;

  void add(const Kernels& version) { found[count++] = &version; }
};

Versions findVersions() {
  Versions versions;
  versions.add(plain::version);
#ifdef KOLVEX_X86_KERNELS
  if (__builtin_cpu_supports("avx2")) versions.add(avx2::version);
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512bw")) {
    versions.add(avx512::version);
    if (__builtin_cpu_supports("avx512vbmi2")) versions.add(avx512vbmi2::version);
  }
#endif
  return versions;
}

const Versions& versions() {
  static const Versions found = findVersions();
  return found;
}

}  // namespace

std::span<const Kernels* const> runnable() { return {versions().found.data(), versions().count}; }

const Kernels& best() { return *runnable().back(); }

}  // namespace kernels
