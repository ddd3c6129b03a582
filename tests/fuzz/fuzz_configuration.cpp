// Configurations, line by line. Lines that end the process by design are left out.
#include <cmath>
#include <sstream>

#include "driver/read_configuration.h"
#include "fuzz_input.h"
#include "result/configuration_keywords.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream text(std::string(reinterpret_cast<const char*>(data), size));
  ExtractionSwitches switches;
  std::string line;
  while (std::getline(text, line)) {
    const bool endsTheProcess = line.find("PERCENTAGE") != std::string::npos && line.find('=') == std::string::npos;
    if (!endsTheProcess) applyConfigurationLine(line, switches);
    require(!std::isnan(leadingNumber(line)));
  }
  require(!std::isnan(switches.percentage));
  return 0;
}
