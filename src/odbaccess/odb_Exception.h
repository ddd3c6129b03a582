// The exception that every failure of the database interface is.
//
//     try {
//       odb_Odb& odb = openOdb("job.odb", true, false);
//       odb.steps().CheckKey("Step-1");
//     } catch (const odb_Exception& error) {
//       if (error.GetCode() == odb_Exception::missingKey) std::puts("the job has not got that far");
//     }
#pragma once

#include "odbaccess/nex_Exception.h"

// The message names the file and the object in it; UserReport() is the message alone.
class odb_Exception : public nex_CommandException {
 public:
  // What went wrong, as the code of the exception.
  enum Code {
    fileError = 1,      // missing, not a database, cut off, wrong content
    missingKey = 2,     // a name that a repository does not hold
    closedError = 3,    // the database was closed
    precisionError = 6  // numbers asked for in a precision that the rows do not have
  };

  odb_Exception(int code, const atr_StringBase& message) : nex_CommandException(code, message) {}

  ~odb_Exception() override;
  // See nex_Exception.h.
  void Propagate() const override;
  nex_Exception* Copy() const override;
  unsigned DynTypeId() const override;
  void DBWrite(const cls_WriteVisitor& visitor) const override;
  atr_String JournalMessage() const override;
  cow_String PythonType() const override;
};

// Translates a message of the library for the user. The catalogue is English: the message itself.
class atr_translate {
 public:
  explicit atr_translate(const char* message) : message_(message) {}
  atr_String Result() const { return message_; }

 private:
  atr_String message_;
};

// Throws an odb_Exception with the code missingKey that names `key`.
[[noreturn]] void odb_throwMissingKey(const odb_String& key);
