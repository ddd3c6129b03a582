// The words that the configuration file is searched for, and what each of them switches.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "result/extraction_switches.h"

// From the first line that contains this on, the configuration counts.
inline constexpr std::string_view kConfigurationStart = "ODB EXTRACTIONS";
// A number stands behind the first "=" of its line.
inline constexpr std::string_view kPercentageKeyword = "PERCENTAGE";

struct SwitchKeyword {
  std::string_view text;
  bool ExtractionSwitches::*target;
  bool value = true;
};

inline constexpr std::array kSwitchKeywords = {
    SwitchKeyword{"EXTRACT_MASS", &ExtractionSwitches::mass},
    SwitchKeyword{"EXTRACT_HISTORY", &ExtractionSwitches::history},
    SwitchKeyword{"EXTRACT_FIELD", &ExtractionSwitches::field},
    SwitchKeyword{"MINMAX_HISTORY", &ExtractionSwitches::historyExtremes},
    SwitchKeyword{"EXTRACT_ALL", &ExtractionSwitches::allFieldOutputs},
    SwitchKeyword{"EXTRACT_STRESS", &ExtractionSwitches::stress},
    SwitchKeyword{"EXTRACT_SPATIAL", &ExtractionSwitches::spatial},
    SwitchKeyword{"EXTRACT_ELEMENT", &ExtractionSwitches::element},
    SwitchKeyword{"EXTRACT_FIELD_SETS", &ExtractionSwitches::fieldSets},
    SwitchKeyword{"EXTRACT_FIELD_COMPONENTS", &ExtractionSwitches::fieldComponents},
    SwitchKeyword{"DO_NOT_COMPUTE_VALUES", &ExtractionSwitches::computeValues, false},
    SwitchKeyword{"ABSOLUTE_MAX", &ExtractionSwitches::absoluteMax},
    SwitchKeyword{"ABSOLUTE_MIN", &ExtractionSwitches::absoluteMin},
    SwitchKeyword{"ENGINEERING_MIN", &ExtractionSwitches::engineeringMin},
    SwitchKeyword{"ENGINEERING_MAX", &ExtractionSwitches::engineeringMax},
    SwitchKeyword{"TENSOR_INVARIANTS", &ExtractionSwitches::tensorInvariants},
};

// A keyword that takes the field outputs whose description contains a word.
struct DescriptionKeyword {
  std::string_view text;
  std::string_view word;
  bool ExtractionSwitches::*target;
};

inline constexpr std::array kDescriptionKeywords = {
    DescriptionKeyword{"EXTRACT_STRESS", "Stress", &ExtractionSwitches::stress},
    DescriptionKeyword{"EXTRACT_SPATIAL", "Spatial", &ExtractionSwitches::spatial},
    DescriptionKeyword{"EXTRACT_ELEMENT", "Element", &ExtractionSwitches::element},
};

// Sets the switches of the keywords that `line` contains; of the percentage nothing.
void applySwitchKeywords(std::string_view line, ExtractionSwitches& switches);

// Whether a field output is taken: by what its description names, or because all are.
bool wantsFieldOutput(const ExtractionSwitches& switches, std::string_view description);

// The decimal number at the start of `text`, blanks before it and anything behind it passed over, "." as the decimal
// point whatever the locale; 0 when none starts there (hexadecimal numbers, "inf" and "nan" are none).
double leadingNumber(const std::string& text);
