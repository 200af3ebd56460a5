// Counts the start codes of a file with nothing but libc: the least that a walk over its NAL units has to do.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: scan_start_codes FILE\n");
        return 2;
    }
    const int file = open(argv[1], O_RDONLY);
    struct stat status {};
    if (file < 0 || fstat(file, &status) != 0) {
        std::perror(argv[1]);
        return 2;
    }
    const size_t size = static_cast<size_t>(status.st_size);
    void *bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    if (bytes == MAP_FAILED) {
        std::perror("mmap");
        return 2;
    }
    const unsigned char *at = static_cast<unsigned char *>(bytes);
    const unsigned char *const end = at + size;
    size_t count = 0;
    for (;;) {
        const void *found = memmem(at, static_cast<size_t>(end - at), "\0\0\1", 3);
        if (found == nullptr)
            break;
        count++;
        at = static_cast<const unsigned char *>(found) + 3;
    }
    std::printf("%zu start codes\n", count);
    munmap(bytes, size);
    close(file);
    return 0;
}
