#include "result/extraction_switches.h"

ExtractionSwitches& extractionSwitches() {
  static ExtractionSwitches switches;
  return switches;
}
