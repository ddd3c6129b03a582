// Every object of a file, known to the layout or not.
#pragma once

#include "hdf5/group.h"
#include "odbstore/inspection.h"

namespace odbscan {

// Opens every object and looks at its attributes: where data sets stand, and which objects cannot be opened or are not
// allowed in the layout.
odbstore::Inspection takeInventory(const h5::Group& root);

}  // namespace odbscan
