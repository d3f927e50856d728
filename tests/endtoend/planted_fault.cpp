// Preloaded into one of our programs: a decoder that a hostile file has taken over. Every progressive JPEG is
// such a file. KESTRINE_FAULT names what the decoder does before it decodes as usual.
#include <csignal>
#include <cstdio> // for jpeglib.h
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <jpeglib.h>
#include <spawn.h>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

int overflowStack(int depth) {
    volatile char frame[4096];
    frame[0] = static_cast<char>(depth);
    return overflowStack(depth + 1) + frame[0];
}

void startProgram() {
    char name[] = "touch", file[] = "escaped";
    char* const arguments[] = {name, file, nullptr};
    pid_t process = 0;
    ::posix_spawnp(&process, name, nullptr, nullptr, arguments, nullptr);
}

void doFault(std::string_view fault) {
    volatile std::size_t much = std::size_t{100} << 30;
    if (fault == "crash")
        *static_cast<volatile int*>(nullptr) = 1;
    else if (fault == "overflow")
        std::_Exit(overflowStack(0));
    else if (fault == "loop")
        for (volatile bool always = true; always;) {
        }
    else if (fault == "allocate")
        std::vector<char>(much).front() = 1;
    else if (fault == "write")
        (void)::open("escaped", O_WRONLY | O_CREAT, 0600);
    else if (fault == "start")
        startProgram();
    else if (fault == "kill")
        ::kill(::getppid(), SIGKILL);
}

} // namespace

extern "C" __attribute__((visibility("default"))) int jpeg_read_header(j_decompress_ptr info,
                                                                       boolean requireImage) {
    static const auto real =
        reinterpret_cast<decltype(&jpeg_read_header)>(::dlsym(RTLD_NEXT, "jpeg_read_header"));
    const int result = real(info, requireImage);
    const char* const fault = std::getenv("KESTRINE_FAULT");
    if (fault != nullptr && info->progressive_mode != 0)
        doFault(fault);
    return result;
}
