// Files that commands which start others need.
#pragma once

#include <string>

namespace batch {

// The path of another program of ours: those that start others stand beside them.
std::string siblingProgram(const char* name);

// The content of a file, however long. Throws base::NoFileError.
std::string textOfFile(const std::string& path);

}  // namespace batch
