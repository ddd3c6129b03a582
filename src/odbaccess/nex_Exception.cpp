#include "odbaccess/nex_Exception.h"

#include <string>

namespace {

constexpr unsigned kNexException = 1;
constexpr unsigned kNexCommandException = 2;

}  // namespace

ZULBasException::ZULBasException(const atr_StringBase& message) : message_(message.view()) {}

ZULBasException::~ZULBasException() = default;

atr_String ZULBasException::DeveloperReport() const {
  std::string report(message_.view());
  if (line_ != 0) report += std::string(" (") + file_.cStr() + ":" + std::to_string(line_) + ")";
  return atr_String(report);
}

atr_String ZULBasException::UserReport() const { return message_; }

void ZULBasException::Throw(const char* file, int line) {
  file_ = atr_String(file);
  line_ = line;
  if (const auto* exception = dynamic_cast<const nex_Exception*>(this)) exception->Propagate();
  throw *this;
}

nex_Exception::nex_Exception(int code, const atr_StringBase& message) : ZULBasException(message), code_(code) {}

nex_Exception::~nex_Exception() = default;

atr_String nex_Exception::DeveloperReport() const { return ZULBasException::DeveloperReport(); }

atr_String nex_Exception::UserReport() const { return ZULBasException::UserReport(); }

int nex_Exception::GetCode() const { return code_; }

unsigned nex_Exception::DynTypeId() const { return kNexException; }

void nex_Exception::DBWrite(const cls_WriteVisitor& visitor) const {
  visitor.visit("code", std::to_string(code_).c_str());
  visitor.visit("message", UserReport().cStr());
}

nex_CommandException::~nex_CommandException() = default;

atr_String nex_CommandException::AsString() const {
  return atr_String(std::string(PythonType().view()) + " " + std::to_string(GetCode()) + ": " + UserReport().cStr());
}

unsigned nex_CommandException::DynTypeId() const { return kNexCommandException; }

void nex_CommandException::DBWrite(const cls_WriteVisitor& visitor) const {
  nex_Exception::DBWrite(visitor);
  visitor.visit("traceback", traceback_.cStr());
}

void nex_CommandException::SetTraceback(cow_String traceback) { traceback_ = std::move(traceback); }

cow_String nex_CommandException::GetTraceback() const { return traceback_; }
