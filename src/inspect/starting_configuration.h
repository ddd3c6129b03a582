// A configuration to begin with.
#pragma once

#include <memory>
#include <string>

#include "odbstore/reader.h"

namespace inspect {

// The text of a configuration that takes what the database has: mass, extremes of histories, all fields over the whole
// model. Above the line from which on it counts stand what each keyword would take here, and the keywords that are left
// to their user; the database is called `name` there.
std::string startingConfiguration(const std::shared_ptr<const odbstore::Reader>& database, const std::string& name);

}  // namespace inspect
