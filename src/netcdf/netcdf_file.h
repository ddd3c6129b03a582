// A netCDF file that nobody vouches for: a program of its own reads it (src/netcdfread), which has the library, limits
// and no rights, so that nothing else is linked with the library and a crash in it is an error here.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/descriptor.h"
#include "base/limited_session.h"
#include "netcdf/description.h"

namespace netcdf {

class File {
 public:
  // Opens the file. Throws base::FileError for one that is not there, not regular, or not netCDF, and where reading it
  // takes more than the limits of base::limitsFor(), or crashes.
  explicit File(const std::string& path);

  const std::string& path() const { return path_; }
  std::int64_t bytes() const { return size_; }
  const Description& description() const { return description_; }

  // Bytes that what is read at once may have: in proportion to the file.
  std::uint64_t mostBytes() const;

  // Values of a variable of the description, `start` and `count` with a number for each of its dimensions; `to` has
  // room for all of them. Throws base::FileError that names the variable. After a crash the program is started anew.
  void read(const Variable& variable, std::span<const std::uint64_t> start, std::span<const std::uint64_t> count,
            std::span<double> to);
  void read(const Variable& variable, std::span<const std::uint64_t> start, std::span<const std::uint64_t> count,
            std::span<float> to);

  // All values of a variable. Throws as above, also where there are more than mostBytes().
  std::vector<std::int64_t> integers(const Variable& variable);
  std::vector<double> reals(const Variable& variable);
  std::string text(const Variable& variable);
  // The numbers of values along each dimension.
  std::vector<std::uint64_t> shapeOf(const Variable& variable) const;

 private:
  void start();
  std::uint64_t countOf(const Variable& variable) const;
  void ask(const Variable& variable, Kind kind, std::span<const std::uint64_t> start,
           std::span<const std::uint64_t> count, std::span<std::byte> to);
  void askForAll(const Variable& variable, Kind kind, std::span<std::byte> to);

  std::string path_;
  base::Descriptor file_;
  std::int64_t size_ = 0;
  std::unique_ptr<base::LimitedSession> session_;
  Description description_;
};

}  // namespace netcdf
