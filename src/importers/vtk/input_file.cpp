#include "importers/vtk/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace importers::vtk {

InputFile::InputFile(const std::string& path)
    : path_(path), file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
  if (!file_) throw ImportError(path, 0, std::strerror(errno));
  struct stat status {};
  if (::fstat(file_.get(), &status) != 0) throw ImportError(path, 0, std::strerror(errno));
  if (!S_ISREG(status.st_mode)) throw ImportError(path, 0, "is not a regular file");
  size_ = static_cast<std::uint64_t>(status.st_size);
}

std::size_t InputFile::read(std::uint64_t offset, std::span<std::byte> out) const {
  if (offset >= size_) return 0;
  const auto got = base::readAt(file_.get(), static_cast<std::int64_t>(offset), out);
  if (!got) throw ImportError(path_, 0, std::strerror(errno));
  return *got;
}

}  // namespace importers::vtk
