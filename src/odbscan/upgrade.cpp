#include "odbscan/upgrade.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>

#include "base/file_error.h"
#include "odbscan/met_objects.h"
#include "odbscan/object_info.h"
#include "odbscan/scan.h"
#include "odbscan/scan_context.h"
#include "odbstore/layout.h"
#include "odbstore/names.h"
#include "odbwriter/block_series.h"

namespace odbscan {

namespace {

namespace attributes = odbstore::attributes;
namespace links = odbstore::links;
using odbstore::DatabaseWriter;
using odbstore::FieldInfo;
using odbstore::linkFromName;
using odbstore::Owner;
using odbstore::OwnerKind;
using odbstore::SetKind;
using odbstore::SetMembers;

std::vector<int> readLabels(const h5::Dataset& dataset) {
  if (dataset.dims().size() != 1) dataset.fail("labels must have one dimension");
  return dataset.readInts();
}

// The rows of a block in one frame, by the path of their data set from the root.
struct Source {
  int frame;
  std::string path;
};

struct FieldSource {
  DatabaseWriter::Field id;
  FieldInfo info;
  bool isChanging = false;
  odbstore::BlockSeries series;
  std::vector<std::vector<Source>> rows;  // of each block
};

struct BlockSource {
  DatabaseWriter::Block id;
  bool isDouble;
  std::vector<Source> rows;
};

struct HistorySource {
  DatabaseWriter::History id;
  std::string path;
};

// Reads the file twice: everything is declared first, then rows and samples are passed on.
class Upgrade {
 public:
  Upgrade(const h5::Group& root, DatabaseWriter& writer) : root_(root), writer_(writer) {}

  void declare() {
    declareModel();
    const std::optional<h5::Group> steps = met_.once(root_.findGroup(links::kSteps));
    if (!steps) return;
    for (const std::string& link : steps->links(h5::LinkOrder::byCreation)) {
      declareStep(met_.once(steps->group(link)), odbstore::nameFromLink(link));
    }
  }

  // Calls take(block, frame, rows) and takeSamples(history, samples) for all that there are.
  template <class TakeRows, class TakeSamples>
  void forEach(TakeRows&& take, TakeSamples&& takeSamples) const {
    for (const BlockSource& block : blocks_) {
      for (const Source& rows : block.rows) {
        const h5::Dataset data = root_.dataset(rows.path);
        if (block.isDouble) {
          const std::vector<double> numbers = data.readDoubles();
          take(block.id, rows.frame, std::span<const double>(numbers));
        } else {
          const std::vector<float> numbers = data.readFloats();
          take(block.id, rows.frame, std::span<const float>(numbers));
        }
      }
    }
    for (const HistorySource& history : histories_) {
      takeSamples(history.id, root_.dataset(history.path).readFloats());
    }
  }

 private:
  // Data sets are copied, so one under many names would make a large file of a small one.
  h5::Dataset datasetOf(const h5::Group& group, const std::string& link) { return met_.once(group.dataset(link)); }

  void declareModel() {
    if (root_.hasAttribute(attributes::kName)) writer_.setName(root_.stringAttribute(attributes::kName, ""));
    if (root_.hasAttribute(attributes::kTitle)) writer_.setTitle(root_.stringAttribute(attributes::kTitle, ""));
    if (root_.hasAttribute(attributes::kProducer)) {
      writer_.setProducer(root_.stringAttribute(attributes::kProducer, ""));
    }
    const std::optional<h5::Group> parts = met_.once(root_.findGroup(links::kParts));
    for (const std::string& name : memberNames(parts)) {
      writer_.addPart(name);
      declareSets(met_.once(parts->group(linkFromName(name))), {OwnerKind::part, name});
    }
    const std::optional<h5::Group> assembly = met_.once(root_.findGroup(links::kAssembly));
    if (!assembly) return;
    if (assembly->hasAttribute(attributes::kName)) {
      writer_.setAssemblyName(assembly->stringAttribute(attributes::kName, ""));
    }
    declareAxis(*assembly);
    const std::optional<h5::Group> instances = met_.once(assembly->findGroup(links::kInstances));
    for (const std::string& name : memberNames(instances)) {
      const h5::Group group = met_.once(instances->group(linkFromName(name)));
      writer_.addInstance(name, group.stringAttribute(attributes::kPart, ""));
      declareMesh(group, name);
      declareSets(group, {OwnerKind::instance, name});
    }
    declareSets(*assembly, {});
  }

  void declareAxis(const h5::Group& assembly) {
    const std::optional<h5::Group> sector = met_.once(assembly.findGroup(links::kSector));
    if (!sector) return;
    const h5::Dataset dataset = datasetOf(*sector, links::kSymmetryAxis);
    if (dataset.dims() != h5::Dims{2, 3}) dataset.fail("the axis must be two points of three coordinates");
    const std::vector<float> numbers = dataset.readFloats();
    std::array<float, 6> axis{};
    std::copy(numbers.begin(), numbers.end(), axis.begin());
    writer_.setSymmetryAxis(axis);
  }

  void declareMesh(const h5::Group& instance, const std::string& name) {
    const std::optional<h5::Group> mesh = met_.once(instance.findGroup(links::kMesh));
    if (!mesh) return;
    if (const std::optional<h5::Group> nodes = met_.once(mesh->findGroup(links::kNodes))) {
      writer_.addNodes(name, readLabels(datasetOf(*nodes, links::kLabels)),
                       datasetOf(*nodes, links::kCoordinates).readDoubles());
    }
    const std::optional<h5::Group> elements = met_.once(mesh->findGroup(links::kElements));
    for (const std::string& type : memberNames(elements)) {
      const h5::Group group = met_.once(elements->group(linkFromName(type)));
      writer_.addElements(name, type, readLabels(datasetOf(group, links::kLabels)),
                          datasetOf(group, links::kConnectivity).readInts());
    }
  }

  void declareSets(const h5::Group& group, const Owner& owner) {
    for (const SetKind kind : {SetKind::element, SetKind::node}) {
      const std::optional<h5::Group> sets = met_.once(group.findGroup(odbstore::setsLink(kind)));
      for (const std::string& name : memberNames(sets)) {
        writer_.addSet(owner, kind, name, membersOf(*sets, owner, linkFromName(name)));
      }
    }
  }

  std::vector<SetMembers> membersOf(const h5::Group& sets, const Owner& owner, const std::string& link) {
    if (owner.kind != OwnerKind::assembly) return {{"", readLabels(datasetOf(sets, link))}};
    std::vector<SetMembers> members;
    const h5::Group set = met_.once(sets.group(link));
    for (const std::string& instance : memberNames(set)) {
      members.push_back({instance, readLabels(datasetOf(set, linkFromName(instance)))});
    }
    return members;
  }

  void declareStep(const h5::Group& group, const std::string& name) {
    const DatabaseWriter::Step step = writer_.addStep(name, readStepInfo(group));
    std::map<std::string, FieldSource> fields;
    const std::optional<h5::Group> frames = met_.once(group.findGroup(links::kFrames));
    const std::size_t count = frames ? frames->links().size() : 0;
    for (std::size_t i = 0; i < count; ++i) {
      const h5::Group frame = met_.once(frames->group(std::to_string(i)));
      const int number = writer_.addFrame(
          step, {frame.intAttribute(attributes::kIncrementNumber, 0), frame.doubleAttribute(attributes::kValue, 0.0),
                 frame.stringAttribute(attributes::kDescription, "")});
      declareFrame(frame, step, number, fields);
    }
    for (auto& [fieldName, field] : fields) declareBlocks(field);
    declareHistories(group, step);
  }

  void declareFrame(const h5::Group& frame, DatabaseWriter::Step step, int number,
                    std::map<std::string, FieldSource>& fields) {
    const std::optional<h5::Group> all = met_.once(frame.findGroup(links::kFields));
    for (const std::string& name : memberNames(all)) {
      const h5::Group group = met_.once(all->group(linkFromName(name)));
      const FieldInfo info = readFieldInfo(group);
      auto known = fields.find(name);
      if (known == fields.end()) {
        known = fields.emplace(name, FieldSource{writer_.addField(step, name, info), info, false, {}, {}}).first;
      }
      FieldSource& field = known->second;
      writer_.addFieldFrame(field.id, number);
      if (!(info == field.info)) {
        writer_.describeField(field.id, number, info);
        field.isChanging = true;
      }
      const std::optional<h5::Group> blocks = met_.once(group.findGroup(links::kBlocks));
      const std::size_t count = blocks ? blocks->links().size() : 0;
      for (std::size_t k = 0; k < count; ++k) {
        takeBlock(met_.once(blocks->group(std::to_string(k))), info, number, field);
      }
    }
  }

  void takeBlock(const h5::Group& block, const FieldInfo& info, int frame, FieldSource& field) {
    const h5::Dataset data = datasetOf(block, links::kData);
    if (data.dims().empty() || data.dims().size() > 2) data.fail("must have the shape [rows, components]");
    if (!data.isFloat()) data.fail("must hold floating-point numbers");
    const DatabaseWriter::Location location = takeLocation(block);
    if (static_cast<std::int64_t>(data.dims()[0]) != writer_.deliveredRows(location)) {
      data.fail(fmt::format("holds {} rows, its location has {}", data.dims()[0], writer_.deliveredRows(location)));
    }
    const std::vector<std::string> labels = block.stringsAttribute(attributes::kComponentLabels);
    odbstore::BlockKey key{location.index, block.intAttribute(attributes::kType, info.type),
                           labels.empty() ? info.componentLabels : labels, data.numberSize() > sizeof(float),
                           data.dims().size() == 2 ? static_cast<std::int64_t>(data.dims()[1]) : 1};
    const std::size_t place = field.series.next(frame, key);
    field.rows.resize(field.series.count());
    field.rows[place].push_back({frame, data.path().substr(1)});
  }

  DatabaseWriter::Location takeLocation(const h5::Group& block) {
    const odbstore::LocationInfo info = readLocationInfo(block);
    odbstore::LocationLabels labels;
    if (hasNodeLabels(info.position)) labels.nodes = readLabels(datasetOf(block, links::kNodeLabels));
    if (hasElementLabels(info.position)) labels.elements = readLabels(datasetOf(block, links::kElementLabels));
    if (hasIntegrationPoints(info.position)) {
      labels.integrationPoints = readLabels(datasetOf(block, links::kIntegrationPoints));
    }
    return writer_.addLocation(info, std::move(labels));
  }

  void declareBlocks(FieldSource& field) {
    for (std::size_t k = 0; k < field.series.count(); ++k) {
      std::vector<int> frames;
      for (const Source& rows : field.rows[k]) frames.push_back(rows.frame);
      const odbstore::BlockKey& key = field.series.key(k);
      const DatabaseWriter::Block block = writer_.addBlock(
          field.id, {key.location}, odbstore::formOf(key, field.info, field.isChanging, std::move(frames)));
      blocks_.push_back({block, key.isDouble, std::move(field.rows[k])});
    }
  }

  void declareHistories(const h5::Group& group, DatabaseWriter::Step step) {
    const std::optional<h5::Group> history = met_.once(group.findGroup(links::kHistory));
    for (const std::string& name : memberNames(history)) {
      const h5::Group source = met_.once(history->group(linkFromName(name)));
      const DatabaseWriter::Region region = writer_.addHistoryRegion(step, name, readHistoryRegionInfo(source));
      const std::optional<h5::Group> outputs = met_.once(source.findGroup(links::kOutputs));
      for (const std::string& output : memberNames(outputs)) {
        const h5::Dataset samples = datasetOf(*outputs, linkFromName(output));
        if (samples.dims().size() != 2) samples.fail("a history must have the shape [samples, numbers of a sample]");
        histories_.push_back({writer_.addHistory(region, output, static_cast<std::int64_t>(samples.dims()[0]),
                                                 static_cast<std::int64_t>(samples.dims()[1])),
                              samples.path().substr(1)});
      }
    }
  }

  const h5::Group& root_;
  DatabaseWriter& writer_;
  MetObjects met_;
  std::vector<BlockSource> blocks_;
  std::vector<HistorySource> histories_;
};

void requireLayout1(int layout) {
  if (layout != 1) throw base::FileError("", "", fmt::format("has layout {}, which needs no upgrade", layout));
}

}  // namespace

void upgrade(int descriptor, const std::string& path, const std::string& name) {
  int layout = 0;
  const h5::Group root = openDatabase(descriptor, layout);
  requireLayout1(layout);
  try {
    DatabaseWriter writer(path, name, {});
    Upgrade upgrade(root, writer);
    upgrade.declare();
    writer.layOut();
    upgrade.forEach([&](DatabaseWriter::Block block, int frame, auto rows) { writer.writeRows(block, frame, rows); },
                    [&](DatabaseWriter::History history, const std::vector<float>& samples) {
                      writer.writeSamples(history, samples);
                    });
    writer.finish();
  } catch (const base::FileError& error) {
    // Errors in the copy name the database, because that is the file that the user has given.
    if (error.file() != name) throw;
    throw base::FileError("", "", fmt::format("cannot be upgraded into {}", error.what()));
  }
}

void readOld(const h5::Group& root) {
  // A writer creates its file only when something is laid out.
  DatabaseWriter nowhere("", "", {});
  Upgrade upgrade(root, nowhere);
  upgrade.declare();
  upgrade.forEach([](auto...) {}, [](auto...) {});
}

}  // namespace odbscan
