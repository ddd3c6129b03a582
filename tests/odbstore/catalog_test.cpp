// Catalogs that can be relied on, and every way in which one cannot.
#include "odbstore/catalog.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <random>

#include "base/descriptor.h"
#include "odbstore/catalog_builder.h"
#include "odbstore/catalog_check.h"
#include "odbstore/catalog_lines.h"
#include "odbstore/catalog_trailer.h"
#include "odbstore/store_error.h"
#include "support/temporary_directory.h"

namespace odbstore {
namespace {

using base::NumberFormat;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int64_t kFileBytes = 100'000;

// Something of everything.
std::vector<std::byte> wholeCatalog() {
  CatalogBuilder catalog(3);
  const std::int32_t nodeLabels = catalog.addArray(NumberFormat::int32, 1, 3, 1000);
  const std::int32_t coordinates = catalog.addArray(NumberFormat::float64, 1, 9, 2000);
  const std::int32_t elements = catalog.addArray(NumberFormat::int32, 1, 2, 3000);
  const std::int32_t connectivity = catalog.addArray(NumberFormat::int32, 1, 4, 3100);
  const std::int32_t sets = catalog.addArray(NumberFormat::int32, 1, 5, 4000);
  const std::int32_t locationNodes = catalog.addArray(NumberFormat::int32, 1, 4, 5000);
  const std::int32_t locationElements = catalog.addArray(NumberFormat::int32, 1, 4, 5100);
  const std::int32_t rowOf = catalog.addArray(NumberFormat::int32, 1, 4, 5200);
  const std::int32_t data = catalog.addArray(NumberFormat::float32, 2, 18, 6000);
  const std::vector<Extent> chunks = {{7000, 7040}, {7040, 7090}};
  const std::int32_t packed = catalog.addPackedArray(NumberFormat::float64, Packing::gzip, 2, 3, chunks);
  const std::int32_t samples = catalog.addArray(NumberFormat::float32, 1, 10, 8000);
  const std::int32_t nodalNodes = catalog.addArray(NumberFormat::int32, 1, 3, 8100);
  catalog.setModel({"a name", "a title", std::nullopt, "ASSEMBLY"}, std::array<float, 6>{0, 0, 0, 0, 0, 1});
  catalog.addPart("P");
  catalog.addPart("Q");
  catalog.addInstance("I-1", "P", nodeLabels, coordinates);
  catalog.addInstance("I-2", "Q", kNone, kNone);
  catalog.addElements(0, "T3D2", elements, connectivity);
  catalog.addSets(OwnerKind::assembly, kNone, SetKind::node,
                  {{"TOP", {{"I-1", sets, 0, 2}, {"I-2", sets, 2, 1}}}, {"NONE", {}}});
  catalog.addSets(OwnerKind::instance, 0, SetKind::element, {{"ALL", {{std::nullopt, sets, 3, 2}}}});
  catalog.addLocation(
      "0", {{"I-1", Position::elementNodal, "T3D2", 0, ""}, 4, 3, locationNodes, locationElements, kNone, rowOf});
  catalog.addLocation("1", {{"I-1", Position::nodal, "", 0, ""}, 3, 3, nodalNodes, kNone, kNone, kNone});
  catalog.addStep("Step-1", {"first", 2.5, {1, 2, 3}, {}, {}});
  catalog.addFrame({0, 0.0, "start"});
  catalog.addFrame({1, 1.0, "end"});
  catalog.addField("NT", {"Temperature", 2, {}, {}, false}, std::nullopt);
  catalog.addBlock({1, std::nullopt, {}, std::nullopt, packed, 3, 1});
  catalog.addField("S", {"Stress", 5, {"11", "22", "33", "12", "13", "23"}, {4, 1}, true},
                   std::vector<std::int32_t>{1, 0});
  catalog.addChange(1, {"Stress at the end", 5, {"11", "22", "33", "12", "13", "23"}, {4}, true});
  catalog.addBlock({0, std::nullopt, {}, std::nullopt, data, 3, 6});
  catalog.addHistoryRegion("Node I-1.3", {"tip", 3, -1, 0, 0, "", "TIP"});
  catalog.addHistoryOutput({"U1", samples, 0, 2, 2});
  catalog.addHistoryOutput({"U2", samples, 4, 3, 2});
  return catalog.build();
}

std::string failureOf(std::vector<std::byte> bytes) {
  try {
    const Catalog catalog(std::move(bytes), "job.odb", kFileBytes);
    checkContent(catalog, [](const std::string& object, const std::string& reason) {
      throw StoreError("job.odb", object, reason);
    });
  } catch (const StoreError& error) {
    return error.what();
  }
  return "";
}

// The catalog with a change to its columns.
std::vector<std::byte> changed(const std::function<void(columns::CatalogT&)>& change) {
  const std::vector<std::byte> whole = wholeCatalog();
  const std::unique_ptr<columns::CatalogT> native(columns::GetCatalog(whole.data())->UnPack());
  change(*native);
  flatbuffers::FlatBufferBuilder builder;
  builder.Finish(columns::Catalog::Pack(builder, native.get()));
  const auto* const bytes = reinterpret_cast<const std::byte*>(builder.GetBufferPointer());
  return {bytes, bytes + builder.GetSize()};
}

std::string failureWith(const std::function<void(columns::CatalogT&)>& change) { return failureOf(changed(change)); }

TEST(CatalogTest, AGoodOneIsAccepted) {
  EXPECT_EQ(failureOf(wholeCatalog()), "");
  EXPECT_EQ(failureWith([](columns::CatalogT&) {}), "");
}

TEST(CatalogTest, SaysWhatWasPutIntoIt) {
  const Catalog catalog(wholeCatalog(), "job.odb", kFileBytes);
  EXPECT_EQ(catalog.text(catalog.columns().title()), "a title");
  EXPECT_EQ(catalog.columns().producer(), kNone);
  EXPECT_EQ(catalog.extents().size(), 13U);
  EXPECT_FALSE(catalog.hasSums());
  const auto* const names = catalog.columns().sets()->name();
  EXPECT_EQ(catalog.find(names, {0, 2}, "NONE"), 0U);
  EXPECT_EQ(catalog.find(names, {0, 2}, "TOP"), 1U);
  EXPECT_EQ(catalog.find(names, {0, 2}, "ALL"), std::nullopt);
}

TEST(CatalogTest, LinesTellEveryChange) {
  const std::vector<std::string> whole = linesOf(Catalog(wholeCatalog(), "job.odb", kFileBytes));
  const auto linesWith = [](const std::function<void(columns::CatalogT&)>& change) {
    return linesOf(Catalog(changed(change), "job.odb", kFileBytes));
  };
  EXPECT_EQ(linesWith([](columns::CatalogT&) {}), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.arrays->place[0] += 4; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.arrays->format[8] = 25; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.steps->mass[0] = 2; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.steps->moments[1] = 7; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.frames->value[1] = 2; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.sets->memberCount[0] = 1; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.blocks->location[0] = 0; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.regions->node[0] = 4; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.texts->bytes[0] = 'b'; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.forms->engineeringShear[0] ^= 1; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.fields->changeFrame[0] = 0; }), whole);
  EXPECT_NE(linesWith([](columns::CatalogT& c) { c.symmetryAxis[5] = 2; }), whole);
}

TEST(CatalogTest, WhatIsNotBuiltAsOneIsRefused) {
  EXPECT_THAT(failureOf({}), HasSubstr("job.odb: /catalog: is damaged: not a valid catalog"));
  EXPECT_THAT(failureOf(std::vector<std::byte>(100)), HasSubstr("not a valid catalog"));
  std::vector<std::byte> cut = wholeCatalog();
  cut.resize(cut.size() / 2);
  EXPECT_THAT(failureOf(cut), HasSubstr("not a valid catalog"));
}

TEST(CatalogTest, ColumnsThatDoNotFitAreRefused) {
  using columns::CatalogT;
  const std::vector<std::function<void(CatalogT&)>> changes = {
      [](CatalogT& c) { c.texts->end.back() += 1; },
      [](CatalogT& c) { c.texts->end[1] = c.texts->end[0] - 1; },
      [](CatalogT& c) { c.lists->end.back() -= 1; },
      [](CatalogT& c) { c.name = 10'000; },
      [](CatalogT& c) { c.name = -2; },
      [](CatalogT& c) { c.arrays->format[0] = 0; },
      [](CatalogT& c) { c.arrays->format[0] = 17; },
      [](CatalogT& c) { c.arrays->packing[0] = 6; },
      [](CatalogT& c) { c.arrays->slabs[0] = -1; },
      [](CatalogT& c) { c.arrays->slabNumbers[0] = std::int64_t{1} << 62U; },
      [](CatalogT& c) { c.arrays->slabs[0] = c.arrays->slabNumbers[0] = std::int64_t{1} << 40U; },
      [](CatalogT& c) { c.arrays->place[0] = kFileBytes - 11; },
      [](CatalogT& c) { c.arrays->place[0] = -4; },
      [](CatalogT& c) { c.arrays->place[0] = std::numeric_limits<std::int64_t>::max(); },
      [](CatalogT& c) { c.arrays->place[0] = 2000; },
      [](CatalogT& c) { c.arrays->place[9] = 1; },
      [](CatalogT& c) { c.arrays->slabs[9] = 3; },
      [](CatalogT& c) { c.arrays->chunkBytes[0] = -1; },
      [](CatalogT& c) { c.arrays->chunkBytes[0] = 41; },
      [](CatalogT& c) { c.arrays->chunkOffset[1] = kFileBytes; },
      [](CatalogT& c) { c.arrays->slabNumbers[9] = 100'000; },
      [](CatalogT& c) { c.arrays->packing[9] = static_cast<std::uint8_t>(Packing::unpacked); },
      [](CatalogT& c) { c.arrays->packing[9] = static_cast<std::uint8_t>(Packing::fletcher32); },
      [](CatalogT& c) { c.arrays->sums.assign(3, 0); },
      [](CatalogT& c) { c.symmetryAxis.pop_back(); },
      [](CatalogT& c) { c.parts->name[0] = -1; },
      [](CatalogT& c) { c.instances->part.pop_back(); },
      [](CatalogT& c) { c.instances->coordinates[0] = kNone; },
      [](CatalogT& c) { c.elements->instance[0] = 2; },
      [](CatalogT& c) { c.sets->owner[2] = 2; },
      [](CatalogT& c) { c.sets->owner[0] = 0; },
      [](CatalogT& c) { c.sets->ownerKind[0] = 3; },
      [](CatalogT& c) { c.sets->kind[0] = 2; },
      [](CatalogT& c) { c.sets->memberEnd.back() += 1; },
      [](CatalogT& c) {
        c.sets->memberFirst[1] = 4;
        c.sets->memberCount[1] = 2;
      },
      [](CatalogT& c) { c.sets->memberCount[1] = -1; },
      [](CatalogT& c) { c.sets->memberLabels[0] = kNone; },
      [](CatalogT& c) { c.locations->position[0] = 5; },
      [](CatalogT& c) { c.locations->rowOf[0] = 99; },
      [](CatalogT& c) { c.locations->rows[0] = -1; },
      [](CatalogT& c) { c.steps->frameEnd[0] = 1; },
      [](CatalogT& c) { c.steps->moments.pop_back(); },
      [](CatalogT& c) { c.fields->form[0] = 3; },
      [](CatalogT& c) { c.fields->frames[1] = 77; },
      [](CatalogT& c) { c.fields->blockEnd[1] = 1; },
      [](CatalogT& c) { c.forms->componentLabels[0] = 50; },
      [](CatalogT& c) { c.blocks->location[0] = 2; },
      [](CatalogT& c) { c.blocks->width[0] = -1; },
      [](CatalogT& c) { c.regions->outputEnd[0] = 1; },
      [](CatalogT& c) { c.outputs->first[1] = 5; },
      [](CatalogT& c) { c.outputs->width[1] = std::int64_t{1} << 62U; },
      // One array for several objects, or numbers of one for several sets or histories.
      [](CatalogT& c) { c.locations->nodeLabels[1] = c.instances->nodeLabels[0]; },
      [](CatalogT& c) { c.locations->elementLabels[0] = c.locations->nodeLabels[0]; },
      [](CatalogT& c) { c.elements->connectivity[0] = c.elements->labels[0]; },
      [](CatalogT& c) { c.blocks->data[1] = c.blocks->data[0]; },
      [](CatalogT& c) { c.outputs->data[1] = c.blocks->data[0]; },
      [](CatalogT& c) { c.sets->memberLabels[0] = c.locations->rowOf[0]; },
      [](CatalogT& c) { c.sets->memberFirst[1] = 1; },
      [](CatalogT& c) { c.sets->memberCount[0] = 3; },
      [](CatalogT& c) { c.outputs->first[1] = 3; },
  };
  for (std::size_t i = 0; i < changes.size(); ++i) {
    EXPECT_THAT(failureWith(changes[i]), HasSubstr("job.odb: /catalog: is damaged: ")) << "change " << i;
  }
}

TEST(CatalogTest, ColumnsThatAreNotAlignedAreRefused) {
  std::vector<std::byte> bytes = wholeCatalog();
  const auto* const locations =
      reinterpret_cast<const flatbuffers::Table*>(columns::GetCatalog(bytes.data())->locations());
  // The column of rows begins in the middle of its first number, which is taken for its length.
  const std::uint8_t* const offset = locations->GetAddressOf(columns::Locations::VT_ROWS);
  const auto place = static_cast<std::size_t>(offset - reinterpret_cast<const std::uint8_t*>(bytes.data()));
  bytes[place] = std::byte{static_cast<unsigned char>(std::to_integer<unsigned>(bytes[place]) + 4)};
  EXPECT_THAT(failureOf(bytes), HasSubstr("job.odb: /catalog: is damaged: a column is not aligned"));
}

TEST(CatalogTest, ContentThatDoesNotFitIsNamed) {
  using columns::CatalogT;
  const std::string block = "job.odb: /steps/Step-1/fields/S/blocks/0";
  const std::vector<std::pair<std::function<void(CatalogT&)>, std::string>> cases = {
      {[](CatalogT& c) { std::swap(c.parts->name[0], c.parts->name[1]); }, "/parts/P: comes after a later name"},
      {[](CatalogT& c) { c.instances->name[1] = c.instances->name[0]; }, "I-1: there are two objects of this name"},
      {[](CatalogT& c) { c.arrays->format[0] = 9; }, "mesh/nodes/labels: labels must be integers in one dimension"},
      {[](CatalogT& c) { c.arrays->slabNumbers[1] = 8; }, "coordinates: must be three floating-point numbers"},
      {[](CatalogT& c) { c.arrays->slabNumbers[3] = 3; }, "connectivity: must be the node labels of each element"},
      {[](CatalogT& c) { c.arrays->format[4] = 9; }, "/assembly/nodeSets/TOP/I-1: must hold integers"},
      {[](CatalogT& c) { c.locations->elementLabels[0] = kNone; }, "/locations/0/elementLabels: is missing"},
      {[](CatalogT& c) { c.locations->position[0] = 0; },
       "/locations/0/elementLabels: does not belong to its position"},
      {[](CatalogT& c) { c.locations->rows[0] = 5; }, "/locations/0: the label data sets differ in length"},
      {[](CatalogT& c) { c.locations->storedRows[1] = 2; }, "/locations/1/rowOf: is missing"},
      {[](CatalogT& c) { c.locations->storedRows[0] = 5; }, "/locations/0: stores 5 rows, more than the 4 it has"},
      {[](CatalogT& c) { c.arrays->slabNumbers[7] = 3; }, "/locations/0/rowOf: holds 3 rows, its location has 4"},
      {[](CatalogT& c) { c.blocks->rows[1] = 4; }, "blocks/0/data: holds 4 rows, its location stores 3"},
      {[](CatalogT& c) { c.blocks->rows[0] = 4; }, "blocks/0/data: holds 4 rows, its location has 3"},
      {[](CatalogT& c) { c.blocks->width[1] = 5; }, "blocks/0/data: its numbers do not fill its rows"},
      {[](CatalogT& c) { c.arrays->slabs[8] = 1; }, "blocks/0/data: holds 1 frames, the block has 2"},
      {[](CatalogT& c) { c.arrays->format[8] = 5; }, "blocks/0/data: must hold floats or doubles"},
      {[](CatalogT& c) { c.fields->changeFrame[0] = 2; }, "fields/S/forms: frame 2 is not one of the field's"},
      {[](CatalogT& c) { c.forms->type[2] = 6; }, "blocks/0: the field has another type in some of its frames"},
      {[](CatalogT& c) { c.arrays->format[10] = 5; }, "outputs/U1: must hold floating-point numbers"},
      {[](CatalogT& c) {
         c.outputs->width[1] = 0;
         c.outputs->samples[1] = kFileBytes;
       },
       "outputs/U2: has 100000 samples without numbers, more than a file of its size can need"},
      {[](CatalogT& c) { c.outputs->name[1] = c.outputs->name[0]; }, "outputs/U1: there are two objects of this name"},
      {[](CatalogT& c) { c.fields->name[1] = c.fields->name[0]; }, "fields/NT: there are two objects of this name"},
  };
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_THAT(failureWith(cases[i].first), HasSubstr(cases[i].second)) << "case " << i;
  }
}

TEST(CatalogTest, NamesWithControlCharactersAreRefused) {
  const std::vector<std::string> names = {"P", "I-1", "TOP", "ALL", "Step-1", "S", "Node I-1.3", "U1", "TIP"};
  for (const std::string& name : names) {
    const char character = name.size() > 1 ? '\x9b' : '\n';
    const std::string failure = failureWith([&](columns::CatalogT& c) {
      std::string bytes(c.texts->bytes.begin(), c.texts->bytes.end());
      std::size_t begin = 0;
      for (const std::uint32_t end : c.texts->end) {
        if (bytes.substr(begin, end - begin) == name) c.texts->bytes[begin] = character;
        begin = end;
      }
    });
    EXPECT_THAT(failure, HasSubstr("control character")) << name;
  }
}

TEST(CatalogTest, WorkThatASmallOneAsksForIsBounded) {
  const std::string failure = failureWith([](columns::CatalogT& c) {
    // A list of frames that very many blocks have.
    columns::BlocksT& blocks = *c.blocks;
    const std::size_t frames = 4000;
    c.frames->incrementNumber.resize(frames);
    c.frames->value.resize(frames);
    c.frames->description.resize(frames);
    c.steps->frameEnd[0] = frames;
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(frames); ++i) c.lists->number.push_back(i);
    c.lists->end.push_back(static_cast<std::uint32_t>(c.lists->number.size()));
    const auto list = static_cast<std::int32_t>(c.lists->end.size()) - 1;
    for (int i = 0; i < 50'000; ++i) {
      blocks.location.push_back(1);
      blocks.hasType.push_back(0);
      blocks.type.push_back(0);
      blocks.componentLabels.push_back(kNone);
      blocks.frames.push_back(list);
      blocks.data.push_back(0);
      blocks.rows.push_back(3);
      blocks.width.push_back(1);
    }
    c.fields->blockEnd[1] = static_cast<std::uint32_t>(blocks.data.size());
  });
  EXPECT_THAT(failure, testing::Not(IsEmpty()));
}

// Whatever bytes are there, nothing but an error comes of them. The sanitizers see what is read where it should not be.
TEST(CatalogTest, NoDamageIsFollowedOutOfBounds) {
  const std::vector<std::byte> whole = wholeCatalog();
  std::mt19937 random(11);
  int accepted = 0;
  for (int run = 0; run < 30'000; ++run) {
    std::vector<std::byte> damaged = whole;
    const unsigned changes = 1 + random() % 4;
    for (unsigned i = 0; i < changes; ++i) {
      const std::size_t at = random() % damaged.size();
      constexpr int kBytes[] = {0, 1, 2, 4, 127, 128, 254, 255};
      damaged[at] = random() % 2 == 0 ? static_cast<std::byte>(random()) : static_cast<std::byte>(kBytes[random() % 8]);
    }
    try {
      const Catalog catalog(std::move(damaged), "job.odb", kFileBytes);
      checkContent(catalog, [](const std::string&, const std::string&) {});
      static_cast<void>(linesOf(catalog));
      ++accepted;
    } catch (const StoreError&) {
    }
  }
  EXPECT_GT(accepted, 100) << "else the content has hardly been looked at";
}

class TrailerTest : public testing::Test {
 protected:
  void write(const std::vector<std::byte>& bytes) {
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  std::optional<std::vector<std::byte>> read(const std::vector<std::byte>& bytes) {
    write(bytes);
    const base::Descriptor file(::open(path_.c_str(), O_RDONLY));
    Trailer trailer;
    return readCatalog(file.get(), static_cast<std::int64_t>(bytes.size()), trailer);
  }
  static std::vector<std::byte> fileOf(const std::string& before, const std::string& catalog, const Trailer& trailer) {
    std::vector<std::byte> bytes;
    for (const char c : before + catalog) bytes.push_back(static_cast<std::byte>(c));
    const auto end = packed(trailer);
    bytes.insert(bytes.end(), end.begin(), end.end());
    return bytes;
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_.file("job.odb");
};

// RFC 3720, appendix B.4, and the check value of CRC catalogues.
constexpr std::uint32_t kSumOfDigits = 0xE3069283U;

TEST_F(TrailerTest, FindsTheCatalogAtTheEndOfTheFile) {
  const auto found = read(fileOf("structure", "123456789", {41, kSumOfDigits, 7}));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->size(), 9U);
}

TEST_F(TrailerTest, NothingIsTakenForACatalogThatIsNone) {
  EXPECT_FALSE(read({}));
  EXPECT_FALSE(read(std::vector<std::byte>(31)));
  EXPECT_FALSE(read(std::vector<std::byte>(5000)));
  EXPECT_FALSE(read(fileOf("structure", "123456780", {41, kSumOfDigits, 7}))) << "the sum differs";
  for (const std::int64_t length : {-1L, 0L, 31L, 40L, 42L, 51L, 1L << 62U}) {
    EXPECT_FALSE(read(fileOf("structure", "123456789", {length, kSumOfDigits, 7}))) << length;
  }
  std::vector<std::byte> whole = fileOf("structure", "123456789", {41, kSumOfDigits, 7});
  for (const std::size_t at : {whole.size() - 1, whole.size() - 8, whole.size() - 32, whole.size() - 25}) {
    std::vector<std::byte> damaged = whole;
    damaged[at] ^= std::byte{1};
    EXPECT_FALSE(read(damaged)) << at;
  }
}

TEST_F(TrailerTest, TheStructureIsWhatLiesInNoArray) {
  write(fileOf("12345xxx6789yy", "", {}));
  const base::Descriptor file(::open(path_.c_str(), O_RDONLY));
  EXPECT_EQ(sumStructure(file.get(), {{5, 8}, {12, 14}}, 14), kSumOfDigits);
  EXPECT_NE(sumStructure(file.get(), {{5, 8}}, 14), kSumOfDigits);
  EXPECT_EQ(sumStructure(file.get(), {}, 1000), std::nullopt) << "the file is shorter";
}

}  // namespace
}  // namespace odbstore
