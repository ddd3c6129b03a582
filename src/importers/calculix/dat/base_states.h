// Finds the tables of the state that a buckling step starts from.
#pragma once

#include <cstddef>
#include <set>
#include <span>

#include "importers/calculix/dat/printed_tables.h"

namespace importers::calculix {

// The numbers of those tables in the list. A buckling step prints that state before its factors, and then the same
// tables for each mode; nothing else distinguishes them from tables of the step before.
std::set<std::size_t> findBaseStates(std::span<const PrintedTable> tables);

}  // namespace importers::calculix
