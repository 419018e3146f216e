// For LD_PRELOAD: the n-th request for memory from the start of "main" on fails, and with $DREVIX_FAIL_EVER all later ones, n
// being $DREVIX_FAIL_AT. Operator new asks here, and so does every library. The number of requests goes to descriptor 3.
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

extern "C" {
// The C library's own, which it offers for this.
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *memory, std::size_t size);
}

namespace {

using Main = int (*)(int, char **, char **);

std::atomic<long> gCount{-1}; // negative: not yet in "main"
long gFailAt = 0;
bool gForEver = false;
Main gMain = nullptr;

thread_local int gExempt = 0; // inside a library that cannot do without memory

bool Fails() {
    if (gCount < 0 || gExempt > 0) {
        return false;
    }
    const long count = ++gCount;
    const bool fails = gFailAt > 0 && (gForEver ? count >= gFailAt : count == gFailAt);
    errno = fails ? ENOMEM : errno;
    return fails;
}

int CountedMain(int count, char **words, char **environment) {
    if (const char *at = std::getenv("DREVIX_FAIL_AT")) {
        gFailAt = std::atol(at);
    }
    gForEver = std::getenv("DREVIX_FAIL_EVER") != nullptr;
    gCount = 0;
    const int status = gMain(count, words, environment);
    const long requests = gCount.exchange(-1);
    ::dprintf(3, "%ld\n", requests);
    return status;
}

// Calls the library's own function of that name without a failure.
template <class Result, class... Arguments>
Result CallExempt(const char *name, Arguments... arguments) {
    using Function = Result (*)(Arguments...);
    const auto own = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
    ++gExempt;
    Result result = own(arguments...);
    --gExempt;
    return result;
}

} // namespace

extern "C" {

// The keymap library reads through null pointers where it gets no memory.
void *xkb_context_new(int flags) {
    return CallExempt<void *>("xkb_context_new", flags);
}
void *xkb_keymap_new_from_names(void *context, const void *names, int flags) {
    return CallExempt<void *>("xkb_keymap_new_from_names", context, names, flags);
}

void *malloc(std::size_t size) {
    return Fails() ? nullptr : __libc_malloc(size);
}
void *calloc(std::size_t count, std::size_t size) {
    return Fails() ? nullptr : __libc_calloc(count, size);
}
void *realloc(void *memory, std::size_t size) {
    return Fails() ? nullptr : __libc_realloc(memory, size);
}

int __libc_start_main(Main main, int count, char **words, void (*init)(), void (*fini)(), void (*end)(),
                      void *stack) {
    using Start = int (*)(Main, int, char **, void (*)(), void (*)(), void (*)(), void *);
    gMain = main;
    const auto start = reinterpret_cast<Start>(::dlsym(RTLD_NEXT, "__libc_start_main"));
    return start(CountedMain, count, words, init, fini, end, stack);
}
}
