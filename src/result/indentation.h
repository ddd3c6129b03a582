// The indentation that the levels of the walk hand down.
#pragma once

#include "odbaccess/odb_api.h"

// Four blanks more than a level has. The same few levels come again for every frame, field and region: what each place
// asked for last is kept.
class DeeperIndentation {
 public:
  const odb_String& of(const odb_String& indent) {
    if (deeper_.length() == 0 || indent != indent_) {
      indent_ = deeper_ = indent;
      deeper_.append("    ");
    }
    return deeper_;
  }

 private:
  odb_String indent_;
  odb_String deeper_;
};
