// Slabs as HDF5 packs them: gzip and Fletcher-32.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "odbstore/catalog.h"

namespace odbstore {

// Unpacks a chunk into just the room of its slab. Returns why that is not possible, null when it has been done: what is
// longer or shorter than the slab is as wrong as what is damaged, and nothing is written behind `out`.
const char* unpack(std::span<const std::byte> stored, Packing packing, std::span<std::byte> out);

// The opposite. `out` is what HDF5 would have stored.
void pack(std::span<const std::byte> slab, Packing packing, std::vector<std::byte>& out);

}  // namespace odbstore
