#include <gtest/gtest.h>

#include <string>

#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_Sequence.h"

namespace {

TEST(Sequences, ACopySharesUntilOneIsWritten) {
  odb_Sequence<odb_String> labels;
  labels.append("S11");
  const odb_Sequence<odb_String> copy = labels;
  labels[0] = odb_String("11");
  EXPECT_STREQ(labels.constGet(0).cStr(), "11");
  EXPECT_STREQ(copy.constGet(0).cStr(), "S11");
}

TEST(Sequences, TellTheirMembers) {
  const odb_Sequence<odb_InvariantEnum> invariants({odb_Enum::mises, odb_Enum::press});
  EXPECT_TRUE(invariants.isMember(odb_Enum::press));
  EXPECT_FALSE(invariants.isMember(odb_Enum::inv3));
}

TEST(Sequences, NumbersPastTheEndReadZero) {
  const float few[] = {1.5F, 2.5F};
  const odb_SequenceFloat sequence(few, 2);
  EXPECT_EQ(sequence.size(), 2);
  EXPECT_EQ(sequence.constGet(1), 2.5F);
  EXPECT_EQ(sequence.constGet(2), 0.0F);
  EXPECT_EQ(sequence.constGet(-1), 0.0F);
}

TEST(Sequences, HoldMoreNumbersThanARowHas) {
  double many[40];
  for (int i = 0; i < 40; ++i) many[i] = i;
  const odb_SequenceDouble sequence(many, 40);
  many[39] = -1;
  EXPECT_EQ(sequence.size(), 40);
  EXPECT_EQ(sequence.constGet(39), 39.0);
  EXPECT_EQ(odb_SequenceDouble().size(), 0);
}

odb_Repository<odb_String, int> threeNumbers() {
  return odb_Repository<odb_String, int>(std::map<odb_String, int>{{"b", 2}, {"a", 1}, {"B", 3}});
}

TEST(Repositories, IterateByNameBytesAscending) {
  std::string keys;
  const auto numbers = threeNumbers();
  odb_RepositoryIT<int> at(numbers);
  for (at.first(); !at.isDone(); at.next()) keys += at.currentKey().cStr();
  EXPECT_EQ(keys, "Bab");
}

TEST(Repositories, LookUpWithoutInserting) {
  const auto numbers = threeNumbers();
  EXPECT_EQ(numbers.ConstFind("c"), nullptr);
  ASSERT_NE(numbers.ConstFind("a"), nullptr);
  EXPECT_EQ(*numbers.ConstFind("a"), 1);
  EXPECT_EQ(numbers.size(), 3);
  EXPECT_EQ((odb_Repository<odb_String, int>().ConstFind("a")), nullptr);
}

TEST(Repositories, RefuseAKeyedAccessToWhatTheyDoNotHold) {
  const auto numbers = threeNumbers();
  EXPECT_EQ(numbers["b"], 2);
  EXPECT_EQ(numbers.get("b"), 2);
  EXPECT_THROW(numbers.CheckKey("c"), odb_Exception);
  try {
    static_cast<void>(numbers["c"]);
    FAIL() << "the key is not there";
  } catch (const nex_Exception& error) {
    EXPECT_EQ(error.GetCode(), odb_Exception::missingKey);
    EXPECT_NE(error.UserReport().Find("\"c\"", 0), error.UserReport().length());
  }
}

TEST(Repositories, AnIteratorOutlivesItsMap) {
  auto* numbers = new auto(threeNumbers());
  cow_BtreeIterator<odb_String, int> at(*numbers);
  delete numbers;
  int sum = 0;
  for (at.First(); !at.IsDone(); at.Next()) sum += at.CurrentValue();
  EXPECT_EQ(sum, 6);
}

}  // namespace
