#include "batch/state/batch_directory.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <unordered_set>
#include <utility>

#include "base/file_error.h"
#include "batch/state/input_id.h"
#include "batch/state/params_sum.h"
#include "batch/state/small_files.h"

namespace batch {

namespace {

constexpr const char* kOwnName = ".kolvex-batch";
constexpr const char* kLockName = "lock";
constexpr const char* kInputsName = "inputs";
constexpr const char* kSettingsName = "settings";

// What bytes of the lock file stand for.
enum LockedByte : int { kRunners = 0, kInputList = 1 };

// Waits with `isPatient`. False if another one has a lock that excludes this one; a file system without locks says
// yes to everything.
bool lock(int file, LockedByte what, short kind, bool isPatient) {
  struct flock range {};
  range.l_type = kind;
  range.l_whence = SEEK_SET;
  range.l_start = what;
  range.l_len = 1;
  while (::fcntl(file, isPatient ? F_OFD_SETLKW : F_OFD_SETLK, &range) != 0) {
    if (errno == EAGAIN || errno == EACCES) return false;
    if (errno != EINTR) return true;
  }
  return true;
}

base::Descriptor openLock(const std::string& path) {
  base::Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
  if (!file) throw base::FileError(path, "", fmt::format("cannot be opened: {}", std::strerror(errno)));
  return file;
}

void makeDirectory(const std::string& path) {
  std::error_code failure;
  std::filesystem::create_directories(path, failure);
  if (failure) throw base::FileError(path, "", fmt::format("cannot be made: {}", failure.message()));
}

std::string hexSum(const std::string& text) {
  const ParamsSum sum = sumOfText(text);
  return fmt::format("{:08x}.{}", sum.sum, sum.length);
}

bool isDigits(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

std::string packName(const Slice& slice) { return fmt::format("{}-of-{}", slice.index, slice.size); }

bool isPackName(const std::string& name) {
  const std::size_t middle = name.find("-of-");
  return middle != std::string::npos && isDigits(name.substr(0, middle)) && isDigits(name.substr(middle + 4));
}

std::string Settings::sum() const {
  std::string options;
  for (const std::string& option : importOptions) options += option + '\0';
  return options.empty() ? hexSum(configuration) : hexSum(configuration) + "-" + hexSum(options);
}

BatchDirectory::BatchDirectory(std::string path)
    : path_(std::filesystem::absolute(path).lexically_normal().string()), own_() {
  while (path_.size() > 1 && path_.back() == '/') path_.pop_back();
  own_ = path_ + "/" + kOwnName;
}

std::string BatchDirectory::configurationPath(const Settings& settings) const {
  return ownPath("configuration-" + settings.sum());
}

bool BatchDirectory::isBatch() const { return ::access(ownPath(kInputsName).c_str(), F_OK) == 0; }

base::Descriptor BatchDirectory::join(const Settings& settings) const {
  makeDirectory(own_);
  base::Descriptor file = openLock(ownPath(kLockName));
  if (lock(file.get(), kRunners, F_WRLCK, false)) {
    const std::string copy = configurationPath(settings);
    if (readSmallFile(copy, std::numeric_limits<std::size_t>::max()) != settings.configuration) {
      writeSmallFile(copy, settings.configuration, true);
    }
    if (lastSettings() != settings.sum()) writeSmallFile(ownPath(kSettingsName), settings.sum() + "\n", true);
    lock(file.get(), kRunners, F_RDLCK, true);
    return file;
  }
  lock(file.get(), kRunners, F_RDLCK, true);
  if (lastSettings() == settings.sum()) return file;
  throw base::FileError(path_, "",
                        "another run with a different configuration or other import options is working here");
}

void BatchDirectory::addInputs(const std::vector<BatchInput>& inputs) const {
  const base::Descriptor file = openLock(ownPath(kLockName));
  lock(file.get(), kInputList, F_WRLCK, true);
  std::string text;
  std::unordered_set<std::string> known;
  if (isBatch()) {
    for (const BatchInput& input : this->inputs()) {
      text += input.path + "\n";
      known.insert(input.path);
    }
  }
  const std::size_t before = known.size();
  for (const BatchInput& input : inputs) {
    if (known.insert(input.path).second) text += input.path + "\n";
  }
  if (known.size() > before || !isBatch()) writeSmallFile(ownPath(kInputsName), text, true);
}

std::vector<BatchInput> BatchDirectory::inputs() const {
  const std::string path = ownPath(kInputsName);
  const auto text = readSmallFile(path, std::numeric_limits<std::size_t>::max());
  if (!text) throw base::FileError(path_, "", "not the directory of a batch (there is no .kolvex-batch/inputs)");
  std::vector<BatchInput> inputs;
  for (std::size_t begin = 0; begin < text->size();) {
    const std::size_t end = text->find('\n', begin);
    if (end == std::string::npos) throw base::FileError(path, "", "the last line is incomplete");
    std::string input = text->substr(begin, end - begin);
    std::string id = inputId(input);
    inputs.push_back({std::move(input), std::move(id)});
    begin = end + 1;
  }
  return inputs;
}

std::string BatchDirectory::lastSettings() const {
  std::string text = readSmallFile(ownPath(kSettingsName)).value_or("");
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace batch
