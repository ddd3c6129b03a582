#include "show_result.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "base/file_error.h"
#include "batch/packs/results.h"
#include "tables/text_output.h"

namespace batch {

namespace {

BatchInput inputNamed(const BatchDirectory& directory, const std::string& name) {
  const std::string path = std::filesystem::absolute(name).lexically_normal().string();
  const std::vector<BatchInput> inputs = directory.inputs();
  const auto isMeant = [&](const BatchInput& input) { return input.id == name || input.path == path; };
  const auto found = std::find_if(inputs.begin(), inputs.end(), isMeant);
  if (found == inputs.end()) throw base::FileError(directory.path(), "", name + " is not an input of this batch");
  return *found;
}

std::optional<std::string> textOf(const Result& result, const ShowOptions& options) {
  if (options.wantsStatus) return textOf(result.record);
  if (options.wantsLog) return result.log();
  if (!result.record.isDone) {
    throw base::FileError(result.record.input, "", "has no params.txt: " + result.record.reason);
  }
  return result.params();
}

}  // namespace

void showResult(const ShowOptions& options) {
  const BatchDirectory directory(options.directory);
  const BatchInput input = inputNamed(directory, options.input);
  const Results results(directory);
  const auto result = results.newest(input, [&](const Result& found) { return found.record.input == input.path; });
  if (!result) throw base::FileError(input.path, "", "has no result yet");
  const std::optional<std::string> text = textOf(*result, options);
  if (!text) throw base::FileError(input.path, "", "its result is damaged; the next run does it again");
  tables::TextOutput output(STDOUT_FILENO, "standard output");
  output.write(*text);
  output.flush();
}

}  // namespace batch
