#include "complete_names.h"

#include <exception>
#include <set>

#include "import_options.h"
#include "importers/formats/table.h"
#include "importers/run/run_import.h"

namespace importers {

namespace {

Outline outlineOf(const ImportOptions& options, const std::vector<KnownFormat>& formats) {
  const FoundFormat found = findFormat(formats, options.input, options.format);
  const WarningSink silent = [](const base::Diagnostic&) {};
  const std::unique_ptr<Source> source =
      found.format->importer->open({found.results, options.isStrict, options.withMass, true, options.shapes}, silent);
  return listImport(*source, {found.results, "", {}, {}, options.naming}, silent);
}

std::vector<std::string> fieldsOf(const Outline& outline) {
  std::set<std::string> names;
  for (const OutlineStep& step : outline.steps) {
    for (const OutlineField& field : step.fields) names.insert(field.name);
  }
  return {names.begin(), names.end()};
}

std::vector<std::string> stepsOf(const Outline& outline) {
  std::vector<std::string> numbers;
  for (const OutlineStep& step : outline.steps) numbers.push_back(std::to_string(step.number));
  return numbers;
}

std::vector<std::string> setsOf(const Outline& outline) {
  std::vector<std::string> names;
  for (const OutlineSet& set : outline.sets) names.push_back(set.name);
  return names;
}

}  // namespace

std::vector<std::string> completeNames(const std::string& option, const std::vector<std::string>& words) {
  try {
    ImportOptions options;
    const std::vector<KnownFormat> formats = makeFormats(allFormats());
    if (importCommand(options, formats).parse(words).isDone || options.input.empty()) return {};
    options.withMass = false;
    tool::endAfterPatience();
    const Outline outline = outlineOf(options, formats);
    if (option == "--set") return setsOf(outline);
    return option == "--field" ? fieldsOf(outline) : stepsOf(outline);
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace importers
