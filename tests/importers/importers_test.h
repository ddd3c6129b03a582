// What the tests of the importers share.
#pragma once

#include <fstream>
#include <string>

#include "importers/input/diagnostics.h"
#include "support/temporary_directory.h"

namespace importers {

// Writes a file into the directory and returns its path.
inline std::string writeText(const TemporaryDirectory& directory, const std::string& name, const std::string& text) {
  const std::string path = directory.file(name);
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

// The message of the ImportError that `action` ends with.
template <class Action>
std::string failureOf(Action&& action) {
  try {
    action();
  } catch (const ImportError& error) {
    return error.what();
  }
  return "no failure";
}

}  // namespace importers
