// Calls of a library that fail when they are told to; KOLVEX_CALLS lists them. The linker leads what is called as
// `name` to __wrap_name, which is here, and what is called as __real_name to the library (its option --wrap). They fail
// with the error number KOLVEX_ERRNO, where the environment has it.

#include <cerrno>
#include <cstdlib>

#include "counted_calls.h"

namespace {

CountedCalls calls;

}  // namespace

extern "C" bool isCallToFail() {
  static const char* const number = std::getenv("KOLVEX_ERRNO");
  if (!calls.isToFail()) return false;
  if (number != nullptr) errno = std::atoi(number);
  return true;
}

int programMain(int argc, char** argv);

int main(int argc, char** argv) {
  calls.begin();
  return programMain(argc, argv);
}

// Whatever a call's parameters are, it is found as it was made: their registers are kept, the stack is left as it was.
#define FAILING(name, failure)                                                                               \
  asm(".text\n.globl __wrap_" #name "\n.type __wrap_" #name ", @function\n__wrap_" #name                     \
      ":\n"                                                                                                  \
      "push %rdi\npush %rsi\npush %rdx\npush %rcx\npush %r8\npush %r9\nsub $24, %rsp\nmovsd %xmm0, (%rsp)\n" \
      "call isCallToFail@PLT\n"                                                                              \
      "movsd (%rsp), %xmm0\nadd $24, %rsp\ntest %al, %al\n"                                                  \
      "pop %r9\npop %r8\npop %rcx\npop %rdx\npop %rsi\npop %rdi\n"                                           \
      "je __real_" #name                                                                                     \
      "@PLT\n"                                                                                               \
      "mov $" #failure ", %rax\nret\n");
#include KOLVEX_CALLS
