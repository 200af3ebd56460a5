#include "write_all.h"

#include <unistd.h>

#include <cerrno>

namespace h265tool {

int WriteAll(int descriptor, std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count >= 0)
            bytes = bytes.subspan(static_cast<size_t>(count));
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

}  // namespace h265tool
