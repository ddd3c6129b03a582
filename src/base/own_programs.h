// Where the other programs of kolvex are.
#pragma once

#include <string>

namespace base {

// The path of a program by its name: beside the program that runs if it can be executed there, so that an installation
// can be moved, else in the directory that kolvex is installed to.
std::string ownProgram(const std::string& name);

}  // namespace base
