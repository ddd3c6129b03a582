// What the objects of a file say of themselves, as plain values.
#pragma once

#include "hdf5/group.h"
#include "odbstore/schema.h"

namespace odbscan {

// Each is read from the attributes of a group, in all layouts. What is wrong with them is a FileError of the group.
odbstore::LocationInfo readLocationInfo(const h5::Object& object);
odbstore::StepInfo readStepInfo(const h5::Object& object);
odbstore::FieldInfo readFieldInfo(const h5::Object& object);
odbstore::HistoryRegionInfo readHistoryRegionInfo(const h5::Object& object);

}  // namespace odbscan
