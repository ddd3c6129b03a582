#include "result/progress.h"

#include <unistd.h>

#include <iostream>

#include "base/control_characters.h"

namespace {

bool isOnTerminal() {
  static const bool isTerminal = ::isatty(STDOUT_FILENO) == 1;
  return isTerminal;
}

}  // namespace

void sayProgress(const char* what, const odb_String& name) {
  std::cout << what;
  if (isOnTerminal()) {
    std::cout << base::escaped(name.cStr());
  } else {
    std::cout << name.cStr();
  }
  std::cout << std::endl;
}
