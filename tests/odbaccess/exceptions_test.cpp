#include <gtest/gtest.h>

#include <bit>
#include <map>
#include <memory>
#include <string>

#include "odbaccess/odb_Exception.h"

namespace {

TEST(Exceptions, ThrowRaisesTheMostDerivedClass) {
  odb_Exception error(odb_Exception::precisionError, "Data is double precision.  Use dataDouble()");
  ZULBasException& base = error;
  EXPECT_THROW(base.Throw("odb_FieldValue.h", 92), odb_Exception);
}

TEST(Exceptions, UserReportIsTheMessageAloneDeveloperReportNamesThePlace) {
  try {
    odb_Exception(6, "wrong").Throw("odb_FieldValue.h", 92);
  } catch (const nex_Exception& error) {
    EXPECT_STREQ(error.UserReport().cStr(), "wrong");
    EXPECT_STREQ(error.DeveloperReport().cStr(), "wrong (odb_FieldValue.h:92)");
    EXPECT_EQ(error.GetCode(), 6);
  }
}

TEST(Exceptions, ABaseOfTheTreeIsRaisedAsItself) {
  try {
    ZULBasException("plain").Throw("file", 1);
  } catch (const nex_Exception&) {
    FAIL() << "it is no nex_Exception";
  } catch (const ZULBasException& error) {
    EXPECT_STREQ(error.UserReport().cStr(), "plain");
  }
}

TEST(Exceptions, ACopyIsOfTheSameClass) {
  odb_Exception error(3, "text");
  error.SetTraceback("from here");
  const std::unique_ptr<nex_Exception> copy(error.Copy());
  ASSERT_NE(dynamic_cast<odb_Exception*>(copy.get()), nullptr);
  EXPECT_EQ(copy->DynTypeId(), error.DynTypeId());
  EXPECT_STREQ(static_cast<odb_Exception&>(*copy).GetTraceback().cStr(), "from here");
}

class Collector : public cls_WriteVisitor {
 public:
  void visit(const char* name, const char* value) const override { values[name] = value; }
  mutable std::map<std::string, std::string> values;
};

TEST(Exceptions, WriteWhatTheyKnowToAVisitor) {
  odb_Exception error(6, "text");
  error.SetTraceback("trace");
  Collector collector;
  error.DBWrite(collector);
  EXPECT_EQ(collector.values["code"], "6");
  EXPECT_EQ(collector.values["message"], "text");
  EXPECT_EQ(collector.values["traceback"], "trace");
}

// The place of a virtual operation in its table, from 0, by the Itanium C++ ABI, in which a pointer to a virtual
// member holds 1 plus the place in bytes (on AArch64 the place itself).
template <class Member>
std::size_t slot(Member member) {
  struct Pointer {
    std::ptrdiff_t place;
    std::ptrdiff_t adjust;
  };
  static_assert(sizeof(Member) == sizeof(Pointer));
  const auto place = std::bit_cast<Pointer>(member).place;
  return static_cast<std::size_t>(place) / sizeof(void*);
}

TEST(Exceptions, VirtualOperationsStandInTheOrderOfTheInterface) {
  // Two places belong to the destructor.
  EXPECT_EQ(slot(&ZULBasException::DeveloperReport), 2U);
  EXPECT_EQ(slot(&ZULBasException::UserReport), 3U);
  EXPECT_EQ(slot(&nex_Exception::AsString), 4U);
  EXPECT_EQ(slot(&nex_Exception::Propagate), 5U);
  EXPECT_EQ(slot(&nex_Exception::GetCode), 6U);
  EXPECT_EQ(slot(&nex_Exception::Copy), 7U);
  EXPECT_EQ(slot(&nex_Exception::DynTypeId), 8U);
  EXPECT_EQ(slot(&nex_Exception::DBWrite), 9U);
  EXPECT_EQ(slot(&nex_CommandException::SetTraceback), 10U);
  EXPECT_EQ(slot(&nex_CommandException::GetTraceback), 11U);
  EXPECT_EQ(slot(&nex_CommandException::JournalMessage), 12U);
  EXPECT_EQ(slot(&nex_CommandException::PythonType), 13U);
  EXPECT_EQ(slot(&odb_Exception::JournalMessage), 12U);
  EXPECT_EQ(slot(&odb_Exception::PythonType), 13U);
}

TEST(Exceptions, TranslationShowsTheMessage) { EXPECT_STREQ(atr_translate("a  b").Result().cStr(), "a  b"); }

}  // namespace
