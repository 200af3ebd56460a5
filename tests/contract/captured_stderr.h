// Standard error in the hands of a test, write by write.

#ifndef TESTS_CONTRACT_CAPTURED_STDERR_H
#define TESTS_CONTRACT_CAPTURED_STDERR_H

#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace test {

// While alive, what goes to standard error is kept. The socket keeps each write apart from the next; some
// hundred of them fit before one blocks.
class CapturedStderr {
 public:
    CapturedStderr() {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) != 0)
            return;
        from_ = ends[0];
        before_ = ::dup(STDERR_FILENO);
        ::dup2(ends[1], STDERR_FILENO);
        ::close(ends[1]);
    }
    ~CapturedStderr() {
        ::dup2(before_, STDERR_FILENO);
        ::close(before_);
        ::close(from_);
    }
    CapturedStderr(const CapturedStderr &) = delete;
    CapturedStderr &operator=(const CapturedStderr &) = delete;

    // What was written since the last call, one string a write.
    std::vector<std::string> Writes() {
        std::vector<std::string> writes;
        char bytes[8192];
        for (;;) {
            const ssize_t length = ::recv(from_, bytes, sizeof bytes, MSG_DONTWAIT);
            if (length <= 0)
                return writes;
            writes.emplace_back(bytes, static_cast<size_t>(length));
        }
    }

 private:
    int before_ = -1;
    int from_ = -1;
};

}  // namespace test

#endif
