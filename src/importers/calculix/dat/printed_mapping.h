// Which fields and histories of the database a printed table becomes.
#pragma once

#include <string>
#include <vector>

#include "importers/calculix/dat/dat_formats.h"
#include "importers/calculix/dat/printed_tables.h"
#include "importers/calculix/frd/field_mapping.h"

namespace importers::calculix {

// The fields that the rows of a table make; none for tables of sums, sections and modes, and those that are left out.
// Their columns are those of DatValues::numbers. Rows in axes of the node or the element make fields of their own,
// which end in "_LOCAL". Names differ from those of fields of the result file, which have other rows: values at
// integration points end in "_IP" (unless `stressAt` gives them the plain names), values at the nodes of a set in
// "_PRINT".
std::vector<MappedField> mapTable(const PrintedTable& table, StressAt stressAt);

// The name of the history output of a number of a row; empty if it is not a result.
std::string outputName(const PrintedTable& table, std::size_t number, const DatValues& row);

}  // namespace importers::calculix
