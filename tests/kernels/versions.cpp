#include "versions.h"

#ifdef __x86_64__
namespace kernels::emulated {
extern const Kernels version;
}
#endif

const std::vector<const kernels::Kernels*>& testedVersions() {
  static const std::vector<const kernels::Kernels*> versions = [] {
    std::vector<const kernels::Kernels*> found(kernels::runnable().begin(), kernels::runnable().end());
#ifdef __x86_64__
    found.push_back(&kernels::emulated::version);
#endif
    return found;
  }();
  return versions;
}
