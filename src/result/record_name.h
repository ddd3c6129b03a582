// The names of records.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "odbaccess/odb_api.h"

// The name with every "-" and every blank replaced by "_", as it stands in a record name.
std::string cleanedName(const odb_String& name);

// What the records of one field output over one region have in common: the cleaned step name, "__Frame_", the
// increment number, the cleaned region tag (empty for the whole model), "__" and the cleaned field output name.
class RecordHead {
 public:
  RecordHead(const odb_String& step, int increment, const odb_String& regionTag, const odb_String& field);

  std::string_view text() const { return text_; }
  // The text itself, with room for the rest of a line.
  std::string&& take() && { return std::move(text_); }

 private:
  std::string text_;
};
