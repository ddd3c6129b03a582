// For programs that count the lines they pass: a child process that ends with _exit() writes its counts too.

extern "C" {
void __gcov_dump();
[[noreturn]] void __real__exit(int status);
[[noreturn]] void __wrap__exit(int status);

void __wrap__exit(int status) {
  __gcov_dump();
  __real__exit(status);
}
}
