#include "odbaccess/odb_Exception.h"

#include <string>

namespace {

constexpr unsigned kOdbException = 3;

}  // namespace

odb_Exception::~odb_Exception() = default;

void odb_Exception::Propagate() const { throw *this; }

nex_Exception* odb_Exception::Copy() const { return new odb_Exception(*this); }

unsigned odb_Exception::DynTypeId() const { return kOdbException; }

void odb_Exception::DBWrite(const cls_WriteVisitor& visitor) const {
  nex_CommandException::DBWrite(visitor);
  visitor.visit("journal", JournalMessage().cStr());
}

atr_String odb_Exception::JournalMessage() const { return atr_String((std::string("# ") + UserReport().cStr())); }

cow_String odb_Exception::PythonType() const { return cow_String("OdbError"); }

void odb_throwMissingKey(const odb_String& key) {
  odb_Exception error(odb_Exception::missingKey,
                      atr_String(std::string("there is no object of the name \"") + key.cStr() + "\""));
  error.Throw("odb_Repository.h", 0);
}
