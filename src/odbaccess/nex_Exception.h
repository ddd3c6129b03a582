// The exceptions of the access library, root first. The order in which the virtual operations are declared
// is part of the interface: programs compiled against it call them by their place.
//
//     try {
//       openOdb("missing.odb", true, false);
//     } catch (const nex_Exception& error) {
//       std::fprintf(stderr, "%s\n", error.UserReport().cStr());
//       if (error.GetCode() == odb_Exception::fileError) return 1;
//     }
#pragma once

#include <string>

#include "odbaccess/odb_String.h"

// The allocation base of the library's objects; it adds no virtual operation.
class mem_AllocationOperators {};

// Receives what an exception has to say of itself, one named value at a time.
class cls_WriteVisitor {
 public:
  virtual ~cls_WriteVisitor() = default;
  virtual void visit(const char* name, const char* value) const = 0;
};

// The root of all exceptions: a message, and the place in the sources that raised it.
class ZULBasException : public mem_AllocationOperators {
 public:
  explicit ZULBasException(const atr_StringBase& message);
  ZULBasException(const ZULBasException&) = default;
  ZULBasException& operator=(const ZULBasException&) = default;

  virtual ~ZULBasException();
  // The message with the place in the sources that raised it, for whoever mends the program.
  virtual atr_String DeveloperReport() const;
  // The message alone, for whoever runs the program.
  virtual atr_String UserReport() const;

  // Notes where the exception was raised and raises it, as an object of its most derived class.
  [[noreturn]] void Throw(const char* file, int line);

  // That place; "" and 0 before Throw(). Good as long as this object.
  const char* file() const { return file_.cStr(); }
  int line() const { return line_; }

 private:
  atr_String message_;
  atr_String file_;
  int line_ = 0;
};

// A failure with a code that a program can act on. Catch it by reference.
class nex_Exception : public ZULBasException {
 public:
  nex_Exception(int code, const atr_StringBase& message);

  ~nex_Exception() override;
  atr_String DeveloperReport() const override;
  atr_String UserReport() const override;
  // The class, the code and the message in one line.
  virtual atr_String AsString() const = 0;
  // Raises a copy of this object, of its own class.
  virtual void Propagate() const = 0;
  // For failures of a database one of odb_Exception::Code.
  virtual int GetCode() const;
  // A copy on the heap; the caller owns it.
  virtual nex_Exception* Copy() const = 0;
  // A number that tells the classes apart.
  virtual unsigned DynTypeId() const;
  // Hands "code" and "message", then what the derived classes add, to `visitor`.
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;

 private:
  int code_;
};

// The failure of a command, with what a scripting session keeps of it.
class nex_CommandException : public nex_Exception {
 public:
  using nex_Exception::nex_Exception;

  ~nex_CommandException() override;
  atr_String AsString() const override;
  unsigned DynTypeId() const override;
  void DBWrite(const cls_WriteVisitor& visitor) const override;
  // The stack of the script that ran the command; empty until it is set.
  virtual void SetTraceback(cow_String traceback);
  virtual cow_String GetTraceback() const;
  // What a session journal keeps of the failure.
  virtual atr_String JournalMessage() const = 0;
  // The name of the Python exception that a script sees.
  virtual cow_String PythonType() const = 0;

 private:
  cow_String traceback_;
};
