// Preloaded into one of our programs: allocations of memory fail as KESTRINE_FAILING_ALLOCATIONS says.
//   "7"          the 7th allocation fails
//   "7-"         the 7th and all later ones fail
//   "before 7"   counts those of the program's own initialisation, before main, instead of those after main
//   began
// With "count", nothing fails. KESTRINE_ALLOCATIONS names a file that gets the two numbers of allocations,
// before and after main began, when the program ends. Processes that the program forks continue its count.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

enum Phase { inLoader, inInitialisation, inMain };

Phase phase = inLoader;
Phase failingPhase = inMain;
unsigned long firstFailing = 0; // 0: none
bool laterOnesToo = false;
unsigned long counts[3];
int (*programsMain)(int, char**, char**);
pid_t program;
std::uintptr_t uncheckedCode = 0;
std::size_t uncheckedSize = 0;

void readPlan() {
    const char* plan = ::getenv("KESTRINE_FAILING_ALLOCATIONS");
    if (plan == nullptr)
        return;
    if (std::strncmp(plan, "before ", 7) == 0) {
        failingPhase = inInitialisation;
        plan += 7;
    }
    char* end = nullptr;
    firstFailing = std::strtoul(plan, &end, 10);
    laterOnesToo = *end == '-';
}

/// Remembers where libplist's code is.
int noteLibrary(dl_phdr_info* object, std::size_t, void*) {
    if (std::strstr(object->dlpi_name, "libplist") == nullptr)
        return 0;
    for (int i = 0; i < object->dlpi_phnum; ++i)
        if (object->dlpi_phdr[i].p_type == PT_LOAD && (object->dlpi_phdr[i].p_flags & PF_X) != 0) {
            uncheckedCode = object->dlpi_addr + object->dlpi_phdr[i].p_vaddr;
            uncheckedSize = object->dlpi_phdr[i].p_memsz;
        }
    return 1;
}

bool fails(const void* caller) {
    if (reinterpret_cast<std::uintptr_t>(caller) - uncheckedCode < uncheckedSize)
        return false;
    const unsigned long number = __atomic_add_fetch(&counts[phase], 1, __ATOMIC_RELAXED);
    if (phase < failingPhase || firstFailing == 0)
        return false;
    const bool isDue = phase == failingPhase
                           ? number == firstFailing || (laterOnesToo && number > firstFailing)
                           : laterOnesToo;
    if (isDue)
        errno = ENOMEM;
    return isDue;
}

void report() {
    const char* path = ::getenv("KESTRINE_ALLOCATIONS");
    if (path == nullptr || ::getpid() != program)
        return;
    char text[64];
    const int length =
        std::snprintf(text, sizeof text, "%lu %lu\n", counts[inInitialisation], counts[inMain]);
    const int file = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (::write(file, text, static_cast<std::size_t>(length)) != length)
        ::abort();
    ::close(file);
}

int countedMain(int count, char** values, char** environment) {
    phase = inMain;
    const int status = programsMain(count, values, environment);
    report();
    return status;
}

} // namespace

#pragma GCC visibility push(default)

extern "C" {

void* malloc(std::size_t size) { return fails(__builtin_return_address(0)) ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
    return fails(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
    return fails(__builtin_return_address(0)) ? nullptr : __libc_realloc(block, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
    return fails(__builtin_return_address(0)) ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    void* const made = memalign(alignment, size);
    if (made == nullptr)
        return ENOMEM;
    *block = made;
    return 0;
}

/// The C library calls this one with the program's main, after all libraries are initialised and before the
/// program's own objects are.
int __libc_start_main(int (*main)(int, char**, char**), int count, char** values, void (*init)(),
                      void (*fini)(), void (*endLoader)(), void* stackEnd) {
    using Start = decltype(&__libc_start_main);
    const auto start = reinterpret_cast<Start>(::dlsym(RTLD_NEXT, "__libc_start_main"));
    programsMain = main;
    program = ::getpid();
    readPlan();
    ::dl_iterate_phdr(noteLibrary, nullptr);
    phase = inInitialisation;
    return start(countedMain, count, values, init, fini, endLoader, stackEnd);
}

} // extern "C"

#pragma GCC visibility pop
