// Paths in the file of the objects of a catalog.
#pragma once

#include <cstddef>
#include <string>

#include "odbstore/catalog.h"

namespace odbstore {

std::string partPath(const Catalog& catalog, std::size_t part);
std::string instancePath(const Catalog& catalog, std::size_t instance);
std::string elementsPath(const Catalog& catalog, std::size_t elements);
// The set itself: a data set of labels (packed or not), or in the assembly a group of them.
std::string setPath(const Catalog& catalog, std::size_t set);
// The labels of `member`, which is one of the set's.
std::string memberPath(const Catalog& catalog, std::size_t set, std::size_t member);
std::string locationPath(const Catalog& catalog, std::size_t location);
std::string stepPath(const Catalog& catalog, std::size_t step);
std::string fieldPath(const Catalog& catalog, std::size_t step, std::size_t field);
// `block` is an index into the table of blocks; the block must belong to the field.
std::string blockPath(const Catalog& catalog, std::size_t step, std::size_t field, std::size_t block);
std::string regionPath(const Catalog& catalog, std::size_t step, std::size_t region);
std::string outputPath(const Catalog& catalog, std::size_t step, std::size_t region, std::size_t output);

}  // namespace odbstore
