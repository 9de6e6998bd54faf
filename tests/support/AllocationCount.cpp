#include "tests/support/AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t allocations = 0;

void* counted(std::size_t size, std::size_t alignment) {
    ++allocations;
    size = (size + alignment - 1) / alignment * alignment;
    if (void* memory = std::aligned_alloc(alignment, size == 0 ? alignment : size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

std::uint64_t velto::test::AllocationCount::ofThisThread() {
    return allocations;
}

// The array and nothrow forms of the library come down to these.
void* operator new(std::size_t size) {
    return counted(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return counted(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
