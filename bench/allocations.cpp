// SPDX-License-Identifier: MIT
#include "allocations.h"

#include <cstddef>

// Replaces the global allocation functions by ones that count the calls and then allocate as usual.

namespace {

thread_local std::uint64_t count = 0;

} // namespace

std::uint64_t allocationCount()
{
    return count;
}

extern "C" {

void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t number, std::size_t size);
void *__libc_realloc(void *memory, std::size_t size);

__attribute__((visibility("default"))) void *malloc(std::size_t size) noexcept
{
    ++count;
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void *calloc(std::size_t number, std::size_t size) noexcept
{
    ++count;
    return __libc_calloc(number, size);
}

__attribute__((visibility("default"))) void *realloc(void *memory, std::size_t size) noexcept
{
    ++count;
    return __libc_realloc(memory, size);
}
}
