#include "export_options.h"

#include <cmath>
#include <cstdlib>
#include <memory>
#include <set>

#include "odbstore/reader.h"

namespace vtk_export {

namespace {

void takeFrames(ExportRequest& request, const std::string& text) {
  const std::optional<FrameRange> range = frameRangeFrom(text);
  if (!range) throw tool::UsageError("\"" + text + "\" is not one of first, last, all, N, N-M");
  request.frames = *range;
}

void takeScale(ExportRequest& request, const std::string& text) {
  char* end = nullptr;
  request.scale = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(request.scale))
    throw tool::UsageError("\"" + text + "\" is not a number");
  request.isDeformed = true;
}

// Fields, steps or sets of the database on the line.
std::vector<std::string> completeNames(const std::string& option, const std::vector<std::string>& words) {
  try {
    ExportOptions options;
    if (exportCommand(options).parse(words).isDone) return {};
    tool::endAfterPatience();
    const odbstore::Reader reader(options.database);
    if (option == "--step") return reader.steps();
    if (option == "--set") {
      std::vector<std::string> names = reader.sets({}, odbstore::SetKind::element);
      for (const std::string& name : reader.sets({}, odbstore::SetKind::node)) names.push_back(name);
      return names;
    }
    std::set<std::string> names;
    for (const std::string& name : reader.steps()) {
      const std::shared_ptr<const odbstore::StoredStep> step = reader.step(name);
      for (const odbstore::StoredField& field : step->fields()) names.insert(field.name);
    }
    return {names.begin(), names.end()};
  } catch (const std::exception&) {
    return {};
  }
}

void addPage(tool::Command& command) {
  command.synopsis("DATABASE --to vtu [-o SERIES] [options]")
      .describe(
          "Writes the mesh and the results of a database for viewers of pictures such as ParaView: one file for each "
          "frame in a directory, and a list of them with their times, which is what the viewer opens. The list appears "
          "when everything else is written.")
      .describe(
          "Values at nodes are data of points, values of elements data of cells. Where a node or an element has "
          "several "
          "values that differ, those of the elements at a node or of the integration points of an element, the array "
          "has "
          "their mean, and its name ends in \"(mean)\".")
      .exitStatus(0, "the series is written; there may have been warnings")
      .exitStatus(1, "a file cannot be read or written, or nothing of what is chosen is there")
      .exitStatus(2, "wrong usage")
      .example("kolvex export job.odb --to vtu")
      .example("kolvex export job.odb --to vtu --frames last --field S --field U --scale 50 -o deformed.pvd")
      .seeAlso("kolvex-import(1)")
      .seeAlso("kolvex-locate(1)");
}

}  // namespace

tool::Command exportCommand(ExportOptions& options) {
  tool::Command command("kolvex export", "write a database for viewers of pictures");
  addPage(command);
  ExportRequest& request = options.request;
  command.argument("DATABASE", options.database, "the database")
      .choice(
          "--to", "FORMAT", {"vtu"}, [&options](const std::string& name) { options.format = name; },
          "the format: vtu, VTK's files for unstructured grids")
      .option("-o,--output", "SERIES", request.output,
              "the list of frames to write (default: job.pvd beside the database); its frames are in job.vtu",
              tool::Completes::file)
      .option(
          "--step", "STEP", [&request](const std::string& text) { request.steps.push_back(text); },
          "export this step only, by its name or its number from 1", tool::Completes::computed)
      .repeated()
      .option(
          "--frames", "FRAMES", [&request](const std::string& text) { takeFrames(request, text); },
          "of every step export the frames first, last, all, N or N-M")
      .option(
          "--field", "NAME", [&request](const std::string& text) { request.fields.push_back(text); },
          "export this field only, in any case; a pattern, \"S*\", too", tool::Completes::computed)
      .repeated()
      .option(
          "--set", "NAME", [&request](const std::string& text) { request.sets.push_back(text); },
          "mark the members of this set only; a pattern too", tool::Completes::computed)
      .repeated()
      .flag(
          "--no-sets", [&request] { request.withSets = false; }, "mark no members of sets")
      .flag("--deformed", request.isDeformed, "move the points by the displacements")
      .option(
          "--scale", "FACTOR", [&request](const std::string& text) { takeScale(request, text); },
          "move them by so many times the displacements (default: 1)")
      .option("--displacement", "FIELD", request.displacement, "the vectors that are the displacements (default: U)",
              tool::Completes::computed)
      .flag("--each-point", request.withEachPoint, "add an array for each integration point")
      .flag("--zlib", request.isPacked, "pack the numbers")
      .exclusive("--set", "--no-sets")
      .completeBy(completeNames);
  return command;
}

}  // namespace vtk_export
