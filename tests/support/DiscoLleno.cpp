// Preloaded into the program under test, makes the disk under
// $QUELMO_DISCO_LLENO look full: every write to a file there fails with
// ENOSPC, as the kernel fails it, without root and without a small file
// system. Writes elsewhere (standard output, the simulator) go through.
// With $QUELMO_DISCO_LLENO_SI, only while that file exists: the disk fills
// while the program runs.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool bajoRaiz(int fd) {
    const char* raiz = std::getenv("QUELMO_DISCO_LLENO");
    if (!raiz || !*raiz) return false;
    const char* si = std::getenv("QUELMO_DISCO_LLENO_SI");
    if (si && *si && ::access(si, F_OK) != 0) return false;
    char enlace[64];
    std::snprintf(enlace, sizeof enlace, "/proc/self/fd/%d", fd);
    char ruta[4096];
    const ssize_t n = ::readlink(enlace, ruta, sizeof ruta - 1);
    if (n <= 0) return false;
    ruta[n] = '\0';
    return std::strncmp(ruta, raiz, std::strlen(raiz)) == 0;
}

// A write to a file under the full disk fails as the kernel fails it.
bool lleno(int fd) {
    if (!bajoRaiz(fd)) return false;
    errno = ENOSPC;
    return true;
}

template <typename F>
F siguiente(const char* nombre) {
    return reinterpret_cast<F>(::dlsym(RTLD_NEXT, nombre));
}

}  // namespace

extern "C" {

ssize_t write(int fd, const void* b, size_t n) {
    static const auto real = siguiente<ssize_t (*)(int, const void*, size_t)>("write");
    return lleno(fd) ? -1 : real(fd, b, n);
}

ssize_t pwrite(int fd, const void* b, size_t n, off_t o) {
    static const auto real = siguiente<ssize_t (*)(int, const void*, size_t, off_t)>("pwrite");
    return lleno(fd) ? -1 : real(fd, b, n, o);
}

ssize_t pwrite64(int fd, const void* b, size_t n, off64_t o) {
    static const auto real = siguiente<ssize_t (*)(int, const void*, size_t, off64_t)>("pwrite64");
    return lleno(fd) ? -1 : real(fd, b, n, o);
}

ssize_t writev(int fd, const struct iovec* v, int n) {
    static const auto real = siguiente<ssize_t (*)(int, const struct iovec*, int)>("writev");
    return lleno(fd) ? -1 : real(fd, v, n);
}

int fallocate(int fd, int modo, off_t o, off_t n) {
    static const auto real = siguiente<int (*)(int, int, off_t, off_t)>("fallocate");
    return lleno(fd) ? -1 : real(fd, modo, o, n);
}

int posix_fallocate(int fd, off_t o, off_t n) {
    static const auto real = siguiente<int (*)(int, off_t, off_t)>("posix_fallocate");
    if (bajoRaiz(fd)) return ENOSPC;
    return real(fd, o, n);
}
}
