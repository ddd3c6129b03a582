#include "reduce/reduction_results.h"

ReductionResults& reductionResults() {
  static ReductionResults results;
  return results;
}
