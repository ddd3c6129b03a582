// The contents of a database as tables for people.
#pragma once

#include <string>

#include "chosen_contents.h"

namespace inspect {

// Long lists are cut unless `isAll`; a line says so. Control characters are escaped.
std::string contentsTable(const ChosenContents& contents, bool isAll);

}  // namespace inspect
