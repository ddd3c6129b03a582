// Files that commands which start others need.
#pragma once

#include <string>

namespace batch {

// The content of a file, however long. Throws base::NoFileError.
std::string textOfFile(const std::string& path);

}  // namespace batch
