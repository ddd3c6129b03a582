// Every object of a file, known to the layout or not.
#pragma once

#include "hdf5/group.h"
#include "odbstore/inspection.h"

namespace odbscan {

// Opens every object and checks its attributes: finds where data sets are stored, and which objects cannot be opened or
// are not allowed in the layout.
odbstore::Inspection takeInventory(const h5::Group& root);

}  // namespace odbscan
