#include <fmt/core.h>

#include <map>

#include "odbscan/object_info.h"
#include "odbscan/scan_context.h"
#include "odbstore/layout.h"
#include "odbstore/names.h"

namespace odbscan {

namespace {

namespace attributes = odbstore::attributes;
namespace links = odbstore::links;

std::optional<std::vector<std::int32_t>> readFrameList(const h5::Group& group, ScanContext& context) {
  const std::optional<h5::Dataset> list = context.once(group.findDataset(links::kFrames));
  if (!list) return std::nullopt;
  return list->readInts();
}

odbstore::BlockEntry scanBlock(const h5::Group& group, ScanContext& context) {
  odbstore::BlockEntry block;
  const std::string id = group.stringAttribute(attributes::kLocation, "");
  const std::optional<std::size_t> location = context.findLocation(id);
  if (!location) group.fail(fmt::format("there is no location \"{}\"", id));
  block.location = *location;
  if (group.hasAttribute(attributes::kType)) block.type = group.intAttribute(attributes::kType, 0);
  block.componentLabels = group.stringsAttribute(attributes::kComponentLabels);
  block.frames = readFrameList(group, context);
  const h5::Dataset data = context.once(group.dataset(links::kData));
  const std::optional<base::NumberFormat> format = data.format();
  if (!format || !base::isFloatingPoint(*format)) data.fail("must hold floats or doubles");
  const h5::Dims& dims = data.dims();
  if (dims.size() != 2 && dims.size() != 3) data.fail("must have the shape [frames, rows, components]");
  block.rows = static_cast<std::int64_t>(dims[1]);
  block.width = dims.size() == 3 ? static_cast<std::int64_t>(dims[2]) : 1;
  block.data = context.addArray(data, true);
  return block;
}

void scanBlocks(const h5::Group& field, ScanContext& context) {
  const std::optional<h5::Group> blocks = context.once(field.findGroup(links::kBlocks));
  if (!blocks) return;
  // Block groups are numbered from 0; their order is that of the numbers, not of the digits.
  const std::size_t count = blocks->links().size();
  for (std::size_t k = 0; k < count; ++k) {
    context.guarded(
        [&] { context.catalog.addBlock(scanBlock(context.once(blocks->group(std::to_string(k))), context)); });
  }
}

// Frames in which the field differs from its own attributes.
std::map<std::int32_t, odbstore::FieldInfo> readForms(const h5::Group& field, ScanContext& context) {
  std::map<std::int32_t, odbstore::FieldInfo> byFrame;
  const std::optional<h5::Group> forms = context.once(field.findGroup(links::kForms));
  for (const std::string& name : memberNames(forms)) {
    const h5::Group form = memberOf(context, *forms, name);
    const odbstore::FieldInfo info = readFieldInfo(form);
    const h5::Dataset frames = context.once(form.dataset(links::kFrames));
    for (const int frame : frames.readInts()) {
      if (!byFrame.emplace(frame, info).second) frames.fail(fmt::format("frame {} has another form already", frame));
    }
  }
  return byFrame;
}

void scanField(const h5::Group& field, const std::string& name, ScanContext& context) {
  const odbstore::FieldInfo info = readFieldInfo(field);
  context.catalog.addField(name, info, readFrameList(field, context));
  if (context.layout() >= 3) {
    context.guarded([&] {
      for (const auto& [frame, form] : readForms(field, context)) context.catalog.addChange(frame, form);
    });
  }
  context.guarded([&] { scanBlocks(field, context); });
}

}  // namespace

void scanFields(const h5::Group& step, ScanContext& context) {
  const std::optional<h5::Group> fields = context.once(step.findGroup(links::kFields));
  for (const std::string& name : memberNames(fields)) {
    context.guarded([&] { scanField(memberOf(context, *fields, name), name, context); });
  }
}

}  // namespace odbscan
