// The numbers that are derived from rows of a field, called as in names of records.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "odbstore/stored_field.h"

namespace report {

enum class FieldKind { scalar, vector, tensor };

// What rows of the type are; a type that is no vector or tensor is a scalar.
FieldKind kindOf(int type);
// The numbers of a row as the page has them: 1, 3 or 6.
std::size_t widthOf(FieldKind kind);

// "" of scalars; "mag", "1", "2", "3" of vectors; of tensors "mises", the six components and those of the valid
// invariants.
std::vector<std::string> quantitiesOf(FieldKind kind, const std::vector<int>& validInvariants);

// For each component of the page, 1, 2, 3 or 11, 22, 33, 12, 13, 23, the column of the block that holds it, -1 for
// none. Of two columns for one component the first counts.
std::vector<int> columnsOf(FieldKind kind, const odbstore::StoredBlock& block);

// Calls `take` for each quantity of rows [n, widthOf(kind)], a component that a block does not have being 0, with its
// numbers.
void derive(FieldKind kind, bool hasHalvedShear, std::span<const float> rows,
            const std::vector<std::string>& quantities,
            const std::function<void(const std::string& quantity, std::span<const float> numbers)>& take);

}  // namespace report
