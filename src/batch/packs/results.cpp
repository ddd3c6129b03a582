#include "batch/packs/results.h"

#include <unistd.h>

#include <filesystem>
#include <limits>

#include "batch/state/small_files.h"

namespace batch {

namespace {

std::optional<Result> inDirectory(const BatchDirectory& directory, const BatchInput& input) {
  std::string place = directory.directoryOf(input);
  std::optional<Record> record = readRecord(place);
  if (!record) return std::nullopt;
  return Result(std::move(*record), input.id, std::move(place));
}

std::optional<Result> inPack(const Pack& pack, const BatchInput& input) {
  const std::optional<std::uint64_t> begin = pack.find(input.id);
  const std::optional<std::string> text = begin ? pack.text(input.id, *begin, kStatusPart) : std::nullopt;
  std::optional<Record> record = text ? recordFrom(*text) : std::nullopt;
  if (!record) return std::nullopt;
  return Result(std::move(*record), input.id, pack, *begin);
}

// Of the same slicing, but another slice: no input of one is in the other.
bool isBeside(const std::string& name, const Slice& slice) {
  return name != packName(slice) && name.ends_with("-of-" + std::to_string(slice.size));
}

}  // namespace

bool Result::hasItsParams() const {
  return pack_ != nullptr ? params().has_value() : batch::hasItsParams(directory_, record);
}

std::optional<std::string> Result::params() const {
  std::optional<std::string> text =
      pack_ != nullptr ? pack_->text(id_, begin_, kParamsPart)
                       : readSmallFile(directory_ + "/" + kParamsName, std::numeric_limits<std::size_t>::max());
  return text && sumOfText(*text) == record.params ? std::move(text) : std::nullopt;
}

std::optional<std::string> Result::log() const {
  return pack_ != nullptr ? pack_->text(id_, begin_, kLogPart)
                          : readSmallFile(directory_ + "/" + kLogName, std::numeric_limits<std::size_t>::max());
}

Results::Results(const BatchDirectory& directory) : directory_(directory) { refreshAll(true); }

Results::Results(const BatchDirectory& directory, const Slice& slice)
    : directory_(directory), slice_(slice), hasOthers_(false) {
  const std::string name = packName(slice);
  const std::string path = directory.packsPath() + "/" + name;
  if (::access(path.c_str(), F_OK) == 0) packs_.try_emplace(name, path).first->second.refresh();
}

// Of known packs those that may have grown by inputs of this slice only if `withKnown`.
void Results::refreshAll(bool withKnown) {
  hasOthers_ = true;
  std::error_code none;
  for (const auto& entry : std::filesystem::directory_iterator(directory_.packsPath(), none)) {
    const std::string name = entry.path().filename().string();
    if (!isPackName(name)) continue;
    const auto [pack, isNew] = packs_.try_emplace(name, entry.path().string());
    if (isNew || (withKnown && !isBeside(name, slice_))) pack->second.refresh();
  }
}

void Results::refresh() { refreshAll(true); }

std::optional<Result> Results::find(const BatchInput& input, const Accept& accept) {
  const auto own = packs_.find(packName(slice_));
  std::optional<Result> result = own == packs_.end() ? std::nullopt : inPack(own->second, input);
  if (result && accept(*result)) return result;
  result = inDirectory(directory_, input);
  if (result && accept(*result)) return result;
  if (!hasOthers_) refreshAll(false);
  for (const auto& [name, pack] : packs_) {
    result = inPack(pack, input);
    if (result && accept(*result)) return result;
  }
  return std::nullopt;
}

std::optional<Result> Results::newest(const BatchInput& input, const Accept& accept) const {
  std::optional<Result> best;
  const auto consider = [&](std::optional<Result> result) {
    if (result && accept(*result) && (!best || best->record.ended < result->record.ended)) best = std::move(result);
  };
  consider(inDirectory(directory_, input));
  for (const auto& [name, pack] : packs_) consider(inPack(pack, input));
  return best;
}

}  // namespace batch
