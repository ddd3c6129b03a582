#include "netcdf/netcdf_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "base/file_error.h"
#include "base/own_programs.h"

namespace netcdf {

namespace {

constexpr const char* kProgram = "netcdfread";

}  // namespace

File::File(const std::string& path) : path_(path) {
  // A pipe would be waited for.
  file_ = base::Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!file_ || ::fstat(file_.get(), &status) != 0) throw base::FileError(path, "", std::strerror(errno));
  if (!S_ISREG(status.st_mode)) throw base::FileError(path, "", "is not a regular file");
  size_ = status.st_size;
  start();
}

std::uint64_t File::mostBytes() const { return (std::uint64_t{64} << 20U) + 16 * static_cast<std::uint64_t>(size_); }

void File::start() {
  session_.reset();
  session_ = std::make_unique<base::LimitedSession>(
      path_, base::LimitedProgram{base::ownProgram(kProgram), {std::to_string(size_)}, file_.get()},
      base::limitsFor(size_));
  const std::string answer = session_->ask("");
  try {
    description_ = unpacked(answer);
  } catch (const std::runtime_error& error) {
    throw base::FileError(path_, "", std::string("reading it gave no description: ") + error.what());
  }
}

std::vector<std::uint64_t> File::shapeOf(const Variable& variable) const {
  std::vector<std::uint64_t> shape;
  for (const std::size_t dimension : variable.dimensions) shape.push_back(description_.dimensions[dimension].length);
  if (variable.hasRecords) shape.front() = std::min(shape.front(), description_.completeRecords);
  return shape;
}

std::uint64_t File::countOf(const Variable& variable) const {
  std::uint64_t count = 1;
  for (const std::uint64_t length : shapeOf(variable)) {
    if (length != 0 && count > mostBytes() / length) {
      throw base::FileError(path_, variable.name, "has more values than a file of that size can hold");
    }
    count *= length;
  }
  if (count > mostBytes() / sizeof(double)) {
    throw base::FileError(path_, variable.name, "has more values than a file of that size can hold");
  }
  return count;
}

void File::ask(const Variable& variable, Kind kind, std::span<const std::uint64_t> start,
               std::span<const std::uint64_t> count, std::span<std::byte> to) {
  if (to.empty()) return;
  if (!session_->isAlive()) this->start();
  Part part;
  part.variable = static_cast<std::uint64_t>(&variable - description_.variables.data());
  part.kind = kind;
  part.start.assign(start.begin(), start.end());
  part.count.assign(count.begin(), count.end());
  session_->ask(packed(part), to);
}

void File::askForAll(const Variable& variable, Kind kind, std::span<std::byte> to) {
  const std::vector<std::uint64_t> shape = shapeOf(variable);
  ask(variable, kind, std::vector<std::uint64_t>(shape.size(), 0), shape, to);
}

void File::read(const Variable& variable, std::span<const std::uint64_t> start, std::span<const std::uint64_t> count,
                std::span<double> to) {
  ask(variable, Kind::real, start, count, std::as_writable_bytes(to));
}

void File::read(const Variable& variable, std::span<const std::uint64_t> start, std::span<const std::uint64_t> count,
                std::span<float> to) {
  ask(variable, Kind::single, start, count, std::as_writable_bytes(to));
}

std::vector<std::int64_t> File::integers(const Variable& variable) {
  if (variable.kind != Kind::integer) throw base::FileError(path_, variable.name, "does not hold integers");
  std::vector<std::int64_t> values(countOf(variable));
  askForAll(variable, Kind::integer, std::as_writable_bytes(std::span(values)));
  return values;
}

std::vector<double> File::reals(const Variable& variable) {
  if (variable.kind == Kind::text || variable.kind == Kind::other) {
    throw base::FileError(path_, variable.name, "does not hold numbers");
  }
  std::vector<double> values(countOf(variable));
  askForAll(variable, Kind::real, std::as_writable_bytes(std::span(values)));
  return values;
}

std::string File::text(const Variable& variable) {
  if (variable.kind != Kind::text) throw base::FileError(path_, variable.name, "does not hold text");
  std::string text(countOf(variable), '\0');
  askForAll(variable, Kind::text, std::as_writable_bytes(std::span(text)));
  return text;
}

}  // namespace netcdf
