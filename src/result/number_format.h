// How numbers are written into the result file.
#pragma once

#include <locale>

// The classic locale with the number format that the reader of the result file expects: as the stream would write
// them, but exponents have at least three digits (1.23457e+007), and what is not finite is inf, -inf or nan. Imbued in
// a stream, it leaves every writer a plain `<<`.
std::locale resultLocale();
