// Names of sets that are unique in records.
#include "importers/run/set_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace importers {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

NamedSet elements(const std::string& name) { return {odbstore::SetKind::element, name, false}; }
NamedSet nodes(const std::string& name) { return {odbstore::SetKind::node, name, false}; }
NamedSet surfaceElements(const std::string& name) { return {odbstore::SetKind::element, name, true}; }
NamedSet surfaceNodes(const std::string& name) { return {odbstore::SetKind::node, name, true}; }

std::vector<std::string> finalNames(const std::vector<NamedSet>& sets) {
  std::vector<std::string> names;
  for (const FinalSetName& set : uniqueSetNames(sets)) names.push_back(set.name);
  return names;
}

struct Case {
  const char* what;
  std::vector<NamedSet> sets;
  std::vector<std::string> names;
};

const std::vector<Case> kCases = {
    {"nothing", {}, {}},
    {"names that differ", {nodes("A"), elements("B")}, {"A", "B"}},
    {"a node set gives way to an element set", {nodes("A"), elements("A")}, {"A-NODES", "A"}},
    {"whatever the order", {elements("A"), nodes("A")}, {"A", "A-NODES"}},
    {"names are equal as they stand in records", {nodes("A-B"), elements("A B")}, {"A-B-NODES", "A B"}},
    {"further ones are numbered",
     {elements("A-B"), nodes("A_B"), nodes("A B"), nodes("A-B")},
     {"A-B", "A_B-NODES", "A B-NODES-2", "A-B-NODES-3"}},
    {"two element sets", {elements("A-B"), elements("A_B"), elements("A B")}, {"A-B", "A_B-2", "A B-3"}},
    {"two node sets", {nodes("A-B"), nodes("A_B")}, {"A-B", "A_B-2"}},
    {"a set of that name keeps it", {elements("A"), nodes("A"), nodes("A-NODES")}, {"A", "A-NODES-2", "A-NODES"}},
    {"an element set of that name too",
     {elements("A"), nodes("A"), elements("A_NODES"), nodes("A-NODES-2")},
     {"A", "A-NODES-3", "A_NODES", "A-NODES-2"}},
    {"numbers that sets have are left out",
     {elements("A-B"), elements("A_B"), elements("A-B-2"), nodes("A B 3")},
     {"A-B", "A_B-4", "A-B-2", "A B 3"}},
    {"a surface", {surfaceElements("S"), surfaceNodes("S")}, {"S", "S-NODES"}},
    {"a surface of nodes", {surfaceNodes("S")}, {"S-NODES"}},
    {"a set called like the nodes of a surface",
     {surfaceElements("S"), surfaceNodes("S"), nodes("S-NODES")},
     {"S", "S-NODES-2", "S-NODES"}},
    {"a surface gives way to a set of elements", {surfaceElements("A-B"), elements("A_B")}, {"A-B-2", "A_B"}},
    {"its elements come before a set of nodes", {nodes("A_B"), surfaceElements("A-B")}, {"A_B-NODES", "A-B"}},
    {"the nodes of a surface keep their suffix before a set of nodes",
     {surfaceElements("S"), surfaceNodes("S"), nodes("S")},
     {"S", "S-NODES", "S-NODES-2"}},
    {"spellings differ in case", {nodes("Top"), elements("TOP"), nodes("top")}, {"Top", "TOP", "top"}},
    {"other characters count", {nodes("A.B"), elements("A_B"), nodes("A+B")}, {"A.B", "A_B", "A+B"}},
    {"blanks at an end", {elements("A "), nodes("A-"), nodes("A_")}, {"A ", "A--NODES", "A_-NODES-2"}},
};

TEST(SetNamesTest, FollowTheTable) {
  for (const Case& row : kCases) EXPECT_EQ(finalNames(row.sets), row.names) << row.what;
}

TEST(SetNamesTest, SayWhichSetsWereRenamed) {
  std::vector<bool> renamed;
  for (const FinalSetName& set :
       uniqueSetNames(std::vector{elements("A"), nodes("A"), surfaceElements("S"), surfaceNodes("S"),
                                  surfaceNodes("s-NODES"), nodes("B"), surfaceNodes("S")})) {
    renamed.push_back(set.isRenamed);
  }
  EXPECT_THAT(renamed, ElementsAre(false, true, false, false, false, false, true));
}

// Every list of four sets out of names that are alike.
TEST(SetNamesTest, NoTwoAreEqualInRecords) {
  std::vector<NamedSet> kinds;
  for (const std::string name : {"A", "A-NODES", "A_2", "A-NODES-2"}) {
    for (const NamedSet& set : {elements(name), nodes(name), surfaceElements(name), surfaceNodes(name)}) {
      kinds.push_back(set);
    }
  }
  std::vector<std::size_t> chosen(4, 0);
  int lists = 0;
  const auto advance = [&] {
    for (std::size_t& place : chosen) {
      if (++place < kinds.size()) return true;
      place = 0;
    }
    return false;
  };
  do {
    std::vector<NamedSet> sets;
    for (const std::size_t place : chosen) sets.push_back(kinds[place]);
    std::set<std::string> names;
    for (const std::string& name : finalNames(sets)) names.insert(nameInRecords(name));
    ASSERT_EQ(names.size(), sets.size());
    ++lists;
  } while (advance());
  EXPECT_EQ(lists, 16 * 16 * 16 * 16);
}

TEST(SetNamesTest, ManyEqualNamesAreNumberedOn) {
  const std::vector<NamedSet> sets(20'000, elements("A"));
  EXPECT_EQ(finalNames(sets).back(), "A-20000");
}

TEST(SetNamesTest, RecordsLeaveOutSomeNames) {
  EXPECT_TRUE(isLeftOutOfRecords("WarnElems"));
  EXPECT_TRUE(isLeftOutOfRecords("MyInfo"));
  EXPECT_FALSE(isLeftOutOfRecords("WARN"));
  EXPECT_FALSE(isLeftOutOfRecords("warning info"));
}

}  // namespace
}  // namespace importers
