#include "reduce/engineering_extremes.h"

#include <cmath>

int engineeringCount(int count, double percentage) {
  const double share = count * percentage / 100.0;
  if (std::isnan(share) || share < 0.0) return 0;
  if (share > count) return count;
  return static_cast<int>(share);
}
