// Packs and unpacks slabs like HDF5's filters gzip and Fletcher-32.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "odbstore/catalog.h"

namespace odbstore {

// Unpacks a chunk into `out`, which has the size of its slab. Returns the reason for a failure, null on success. Data
// longer or shorter than the slab is an error like any damage; nothing is written beyond `out`.
const char* unpack(std::span<const std::byte> stored, Packing packing, std::span<std::byte> out);

// The opposite: `out` receives what HDF5 would have stored.
void pack(std::span<const std::byte> slab, Packing packing, std::vector<std::byte>& out);

}  // namespace odbstore
