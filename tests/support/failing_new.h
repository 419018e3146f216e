// Replaces a program's `new`, so that it can fail. Include it in one source of a test program.
#pragma once

#include "tests/support/faults.h"

#include <cstdlib>
#include <new>

void *operator new(std::size_t size) {
    const bool fails = drevix::test::gNewFailsIn > 0 && --drevix::test::gNewFailsIn == 0;
    void *const memory = fails ? nullptr : std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
void *operator new(std::size_t size, const std::nothrow_t & /*tag*/) noexcept try {
    return operator new(size);
} catch (const std::bad_alloc &) {
    return nullptr;
}
// Not inlined, or the compiler would warn that memory from malloc is freed after a `new`.
[[gnu::noinline]] void operator delete(void *memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void *memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
