#include "result/progress.h"

#include <unistd.h>

#include "base/control_characters.h"

std::string shownInProgress(const odb_String& text) {
  static const bool isTerminal = ::isatty(STDOUT_FILENO) == 1;
  return isTerminal ? base::escaped(text.cStr()) : text.cStr();
}
