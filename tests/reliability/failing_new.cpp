// An operator new that fails when it is told to, for programs built with it:
//   KOLVEX_FAIL_NEW=7    the seventh allocation of the process fails
//   KOLVEX_FAIL_NEW=7+   that one and all behind it
//   KOLVEX_COUNT_NEW=F   the number of allocations is written to the file F when the process ends
// Counting begins with main(), which is called programMain() here: before it, while objects of libraries are made, the
// process can only end. Memory that libraries in C take for themselves does not come from here.

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

std::atomic<unsigned long> count = 0;

struct Order {
  unsigned long which = 0;
  bool isForGood = false;

  Order() {
    const char* text = std::getenv("KOLVEX_FAIL_NEW");
    if (text == nullptr) return;
    char* end = nullptr;
    which = std::strtoul(text, &end, 10);
    isForGood = *end == '+';
  }
};

bool isCounting = false;

bool isToFail() {
  static const Order order;
  if (!isCounting) return false;
  const unsigned long number = ++count;
  return number == order.which || (order.isForGood && number > order.which);
}

// Empty sizes have an address of their own as well.
std::size_t atLeastOne(std::size_t size) { return size == 0 ? 1 : size; }

void* allocate(std::size_t size) { return isToFail() ? nullptr : std::malloc(atLeastOne(size)); }

void* allocate(std::size_t size, std::align_val_t alignment) {
  const auto unit = static_cast<std::size_t>(alignment);
  return isToFail() ? nullptr : std::aligned_alloc(unit, (atLeastOne(size) + unit - 1) / unit * unit);
}

void* orThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

struct CountAtEnd {
  ~CountAtEnd() {
    const char* path = std::getenv("KOLVEX_COUNT_NEW");
    std::FILE* file = path == nullptr ? nullptr : std::fopen(path, "w");
    if (file == nullptr) return;
    std::fprintf(file, "%lu\n", count.load());
    std::fclose(file);
  }
} countAtEnd;

}  // namespace

int programMain(int argc, char** argv);

int main(int argc, char** argv) {
  isCounting = true;
  return programMain(argc, argv);
}

void* operator new(std::size_t size) { return orThrow(allocate(size)); }
void* operator new[](std::size_t size) { return orThrow(allocate(size)); }
void* operator new(std::size_t size, std::align_val_t alignment) { return orThrow(allocate(size, alignment)); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return orThrow(allocate(size, alignment)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
