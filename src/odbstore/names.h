// Turns names into link names of the file and back.
#pragma once

#include <string>
#include <string_view>

namespace odbstore {

// A name as a link name: "%" as "%25", "/" as "%2F", a lone "." as "%2E". HDF5 would take the last two for paths.
std::string linkFromName(std::string_view name);

// The name that a link name stands for. A "%" that does not start one of the three escapes stands for itself.
std::string nameFromLink(std::string_view link);

}  // namespace odbstore
