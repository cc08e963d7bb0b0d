// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Qt synchronises calls across threads with locks that the thread sanitizer does not see, because Qt itself is built
/// without it. These classes annotate the order for it. Without the sanitizer they do nothing.

#if defined(__SANITIZE_THREAD__)
#    define SONDIXQT_THREAD_SANITIZER
#elif defined(__has_feature)
#    if __has_feature(thread_sanitizer)
#        define SONDIXQT_THREAD_SANITIZER
#    endif
#endif

#if defined(SONDIXQT_THREAD_SANITIZER)
extern "C" void __tsan_acquire(void *place);
extern "C" void __tsan_release(void *place);
#endif

namespace SondixQt {

/// Scope of a call into the thread of \a callee, or of what follows that thread's end.
class CallerFence
{
public:
    explicit CallerFence([[maybe_unused]] void *callee)
        : place(callee)
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_release(place);
#endif
    }
    ~CallerFence()
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_acquire(place);
#endif
    }
    CallerFence(const CallerFence &) = delete;
    CallerFence &operator=(const CallerFence &) = delete;

private:
    [[maybe_unused]] void *place;
};

/// Scope in which the callee runs such a call.
class CalleeFence
{
public:
    explicit CalleeFence([[maybe_unused]] void *callee)
        : place(callee)
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_acquire(place);
#endif
    }
    ~CalleeFence()
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_release(place);
#endif
    }
    CalleeFence(const CalleeFence &) = delete;
    CalleeFence &operator=(const CalleeFence &) = delete;

private:
    [[maybe_unused]] void *place;
};

} // namespace SondixQt
