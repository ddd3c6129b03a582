// Calls of HDF5 that fail when they are told to, as they do when memory is short inside of it. The linker leads what is
// called as H5Xxx to __wrap_H5Xxx, which is here, and what is called as __real_H5Xxx to HDF5 (its option --wrap).

#include "counted_calls.h"

namespace {

CountedCalls calls;

}  // namespace

extern "C" bool isCallToFail() { return calls.isToFail(); }

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
#include "hdf5_calls.inc"
