// How numbers are written into the result file.
#pragma once

#include <string>

// Adds a number as its reader expects it: six significant digits as by printf's %g, but exponents have at least three
// digits (1.23457e+007), and what is not finite is inf, -inf or nan.
void appendNumber(std::string& text, double number);
