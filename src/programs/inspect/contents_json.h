// The contents of a database as JSON.
#pragma once

#include <string>

#include "chosen_contents.h"

namespace inspect {

// An object with the lists `instances`, `steps`, `fields`, `sets` and `histories`, as far as they are chosen. Numbers
// that JSON has none for are the texts "nan", "inf" and "-inf".
std::string contentsJson(const ChosenContents& contents);

}  // namespace inspect
