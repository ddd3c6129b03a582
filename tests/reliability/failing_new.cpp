// An operator new that fails when it is told to. Memory that libraries in C take for themselves does not come from
// here.

#include <cstdlib>
#include <new>

#include "counted_calls.h"

namespace {

CountedCalls calls;

// Empty sizes have an address of their own as well.
std::size_t atLeastOne(std::size_t size) { return size == 0 ? 1 : size; }

void* allocate(std::size_t size) { return calls.isToFail() ? nullptr : std::malloc(atLeastOne(size)); }

void* allocate(std::size_t size, std::align_val_t alignment) {
  const auto unit = static_cast<std::size_t>(alignment);
  return calls.isToFail() ? nullptr : std::aligned_alloc(unit, (atLeastOne(size) + unit - 1) / unit * unit);
}

void* orThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

int programMain(int argc, char** argv);

int main(int argc, char** argv) {
  calls.begin();
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
