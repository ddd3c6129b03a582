// For programs that count the lines they pass: a child process that ends with _exit() writes its counts too.

extern "C" {
int __llvm_profile_write_file();
[[noreturn]] void __real__exit(int status);
[[noreturn]] void __wrap__exit(int status);

void __wrap__exit(int status) {
  __llvm_profile_write_file();
  __real__exit(status);
}
}
