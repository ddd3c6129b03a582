// The strings of the access library: reference-counted, cheap to copy, never modified through a copy.
//
//     odb_String path = "job";
//     path.append(".odb");
//     std::puts(path.cStr());
//
// An empty string owns no storage; its view is the empty string, never a null pointer.
#pragma once

#include <memory>
#include <string>
#include <string_view>

// A reference-counted text, base of the strings that the library's concatenation and report
// operations return.
class atr_StringBase {
 public:
  atr_StringBase() = default;
  atr_StringBase(const char* text);
  explicit atr_StringBase(std::string_view text);

  // A NUL-terminated view, good until this string is assigned to, appended to or destroyed.
  const char* cStr() const { return text_ ? text_->c_str() : ""; }

  // Number of bytes, the terminating NUL not counted.
  int length() const { return text_ ? static_cast<int>(text_->size()) : 0; }

  // Position of the first occurrence of `text` at or after `start`, counted in bytes from 0;
  // length() when there is none.
  int Find(const char* text, int start) const;

  // Adds `text` at the end. Copies of this string keep what they had.
  void append(const char* text);

  // Good as long as cStr(), for programs that go on with the standard library.
  std::string_view view() const { return text_ ? std::string_view(*text_) : std::string_view(); }

 private:
  std::shared_ptr<const std::string> text_;
};

// The text that reports and translations return.
class atr_String : public atr_StringBase {
 public:
  using atr_StringBase::atr_StringBase;
};

// The text that traceback and type-name operations of the exceptions exchange.
class cow_String : public atr_StringBase {
 public:
  using atr_StringBase::atr_StringBase;
};

// The string of the database interface: names, keys, descriptions.
class odb_String {
 public:
  odb_String() = default;
  odb_String(const char* text) : text_(text) {}
  explicit odb_String(std::string_view text) : text_(text) {}
  // The decimal text of `number`.
  explicit odb_String(int number);
  odb_String(const atr_StringBase& text) : text_(text) {}

  odb_String& operator=(const atr_StringBase& text) {
    text_ = text;
    return *this;
  }

  // See atr_StringBase.
  const char* cStr() const { return text_.cStr(); }
  int length() const { return text_.length(); }
  void append(const odb_String& other) { text_.append(other.cStr()); }
  std::string_view view() const { return text_.view(); }

 private:
  atr_StringBase text_;
};

// Comparisons go byte by byte, bytes taken as unsigned: the key order of every repository.
inline bool operator==(const odb_String& a, const odb_String& b) { return a.view() == b.view(); }
inline bool operator!=(const odb_String& a, const odb_String& b) { return a.view() != b.view(); }
inline bool operator<(const odb_String& a, const odb_String& b) { return a.view() < b.view(); }
