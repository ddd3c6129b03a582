#include "batch/packs/pack.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/file_error.h"
#include "batch/packs/pack_entry.h"
#include "batch/packs/pack_writer.h"
#include "support/temporary_directory.h"

namespace batch {
namespace {

const PackTexts kTexts = {"state\tdone\n", "a\t1\nb\t2\n", "Done"};

std::string textOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void writeFile(const std::string& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

PackWriter claimed(const std::string& path) {
  PackWriter writer(path);
  EXPECT_TRUE(writer.claim());
  return writer;
}

std::optional<std::string> lastText(const Pack& pack, const std::string& id, PackPart part) {
  const auto begin = pack.find(id);
  return begin ? pack.text(id, *begin, part) : std::nullopt;
}

TEST(PackEntry, IsAHeadAndThreeTexts) {
  // RFC 3720, appendix B.4, has the sum of 32 zeros; e3069283 is that of the digits; that of the line was computed bit
  // by bit in Python.
  EXPECT_EQ(entryText("a.b-1", {"123456789", "", std::string(32, '\0')}),
            "result a.b-1 9 e3069283 0 00000000 32 8a9136aa 6c330204\n123456789" + std::string(32, '\0') + "\n");
}

TEST(PackEntry, HeadSaysWhereTheTextsAre) {
  const std::string entry = entryText("id", kTexts);
  const auto head = headFrom(entry);
  ASSERT_TRUE(head);
  EXPECT_EQ(head->id, "id");
  EXPECT_EQ(entry.substr(head->beginOf(kStatusPart), 11), kTexts[kStatusPart]);
  EXPECT_EQ(entry.substr(head->beginOf(kParamsPart), 8), kTexts[kParamsPart]);
  EXPECT_EQ(entry.substr(head->beginOf(kLogPart), 4), kTexts[kLogPart]);
  EXPECT_EQ(head->entryLength(), entry.size());
}

TEST(PackEntry, HeadIsNoneIfAnyByteIsMissingOrWrong) {
  const std::string entry = entryText("id", kTexts);
  const std::size_t length = headFrom(entry)->length;
  for (std::size_t i = 0; i < length; ++i) {
    EXPECT_FALSE(headFrom(std::string_view(entry).substr(0, i))) << i;
    std::string damaged = entry;
    damaged[i] = static_cast<char>(damaged[i] ^ 1);
    EXPECT_FALSE(headFrom(damaged)) << i;
  }
  EXPECT_FALSE(headFrom(std::string(kLongestHead * 2, '\0')));
}

TEST(Pack, TheLastEntryOfAnInputCounts) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("packs/0-of-1");
  PackWriter writer = claimed(path);
  Pack pack(path);
  writer.append("a", kTexts, false);
  writer.append("b", {"s", "p", ""}, false);
  pack.refresh();
  EXPECT_EQ(lastText(pack, "a", kParamsPart), kTexts[kParamsPart]);
  writer.append("a", {"", "new", "log"}, true);
  EXPECT_EQ(lastText(pack, "a", kParamsPart), kTexts[kParamsPart]) << "not looked at again yet";
  pack.refresh();
  EXPECT_EQ(lastText(pack, "a", kParamsPart), "new");
  EXPECT_EQ(lastText(pack, "b", kStatusPart), "s");
  EXPECT_FALSE(pack.find("c"));
}

TEST(Pack, ALongOneIsReadInPieces) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("0-of-1");
  PackWriter writer = claimed(path);
  for (std::size_t i = 0; i < 400; ++i) {
    writer.append(std::to_string(i), {std::to_string(i), std::string(i * 7, 'x'), ""}, false);
  }
  writer.append("large", {"s", std::string(300'000, 'y'), "l"}, false);
  writer.append("last", kTexts, false);
  Pack pack(path);
  pack.refresh();
  for (std::size_t i = 0; i < 400; ++i) {
    EXPECT_EQ(lastText(pack, std::to_string(i), kStatusPart), std::to_string(i));
    EXPECT_EQ(lastText(pack, std::to_string(i), kParamsPart), std::string(i * 7, 'x'));
  }
  EXPECT_EQ(lastText(pack, "large", kParamsPart), std::string(300'000, 'y'));
  EXPECT_EQ(lastText(pack, "last", kLogPart), kTexts[kLogPart]);
}

TEST(Pack, ATornTailIsCutAtEveryByteAndWrittenAgain) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("0-of-1");
  claimed(path).append("a", kTexts, false);
  const std::string first = textOf(path);
  const std::string second = entryText("b", kTexts);
  for (std::size_t length = 0; length < second.size(); ++length) {
    writeFile(path, first + second.substr(0, length));
    Pack before(path);
    before.refresh();
    EXPECT_TRUE(before.find("a")) << length;
    EXPECT_FALSE(before.find("b")) << length;
    PackWriter writer = claimed(path);
    EXPECT_EQ(textOf(path), first) << length;
    writer.append("b", kTexts, false);
    EXPECT_EQ(textOf(path), first + second) << length;
    before.refresh();
    EXPECT_EQ(lastText(before, "b", kParamsPart), kTexts[kParamsPart]) << "seen when it is whole, " << length;
  }
}

TEST(Pack, ATailOfZerosIsCut) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("0-of-1");
  claimed(path).append("a", kTexts, false);
  const std::string first = textOf(path);
  const std::string second = entryText("b", kTexts);
  for (std::size_t length = 0; length < headFrom(second)->length; ++length) {
    writeFile(path, first + second.substr(0, length) + std::string(second.size() - length, '\0'));
    claimed(path);
    EXPECT_EQ(textOf(path), first) << length;
  }
}

TEST(Pack, ADamagedTextIsNotGiven) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("0-of-1");
  const std::string entry = entryText("a", kTexts);
  const auto head = headFrom(entry);
  for (std::uint64_t i = head->length; i + 1 < entry.size(); ++i) {
    std::string damaged = entry;
    damaged[i] = static_cast<char>(damaged[i] ^ 1);
    writeFile(path, damaged + entryText("b", kTexts));
    Pack pack(path);
    pack.refresh();
    std::size_t given = 0;
    for (const PackPart part : {kStatusPart, kParamsPart, kLogPart}) given += lastText(pack, "a", part) ? 1U : 0U;
    EXPECT_EQ(given, 2U) << i;
    EXPECT_EQ(lastText(pack, "b", kParamsPart), kTexts[kParamsPart]) << "the next entry is found, " << i;
  }
}

TEST(Pack, WhatIsNoFileIsEmpty) {
  const TemporaryDirectory directory;
  for (const std::string& path : {directory.file("gone"), directory.file(".")}) {
    Pack pack(path);
    pack.refresh();
    EXPECT_FALSE(pack.find("a")) << path;
  }
}

TEST(PackWriter, OnlyOneHasThePack) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("0-of-1");
  PackWriter second(path);
  {
    PackWriter first = claimed(path);
    first.append("a", kTexts, false);
    EXPECT_FALSE(second.claim());
  }
  EXPECT_TRUE(second.claim());
  second.append("b", kTexts, false);
  EXPECT_EQ(textOf(path), entryText("a", kTexts) + entryText("b", kTexts));
}

TEST(PackWriter, WhatCannotBeWrittenLeavesThePackAsItWas) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("0-of-1");
  PackWriter writer = claimed(path);
  writer.append("a", kTexts, false);
  const std::string before = textOf(path);
  struct rlimit usual {};
  ::getrlimit(RLIMIT_FSIZE, &usual);
  struct rlimit small = usual;
  small.rlim_cur = before.size() + 20;
  std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_THROW(writer.append("b", kTexts, false), base::FileError);
  ::setrlimit(RLIMIT_FSIZE, &usual);
  EXPECT_EQ(textOf(path), before);
  writer.append("b", kTexts, false);
  EXPECT_EQ(textOf(path), before + entryText("b", kTexts));
}

TEST(PackWriter, ADirectoryThatCannotBeIsNamed) {
  const TemporaryDirectory directory;
  writeFile(directory.file("packs"), "a file");
  EXPECT_THROW(PackWriter(directory.file("packs/0-of-1")), base::FileError);
}

}  // namespace
}  // namespace batch
