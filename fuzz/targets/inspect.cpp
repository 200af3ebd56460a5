// `h265tool inspect` of whole streams, as lines and as JSON.

#include <sys/mman.h>
#include <unistd.h>

#include "inspect.h"
#include "support/byte_stream.h"
#include "support/check.h"
#include "support/target.h"
#include "syntax/nal_units.h"

namespace {

using fuzz::Bytes;

// A file in memory, known by a path.
class MemoryFile {
 public:
    explicit MemoryFile(const Bytes &content) : descriptor_(memfd_create("stream", MFD_CLOEXEC)) {
        FUZZ_CHECK(descriptor_ >= 0);
        FUZZ_CHECK(write(descriptor_, content.data(), content.size()) ==
                   static_cast<ssize_t>(content.size()));
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
    int descriptor_;
};

// A recipe gives a stream, or bytes that need not be one.
Bytes StreamOf(const uint8_t *data, size_t size) {
    const Bytes bytes(data, data + size);
    if (fuzz::StartCodeLength(bytes) != 0)
        return bytes;
    fuzz::FuzzInput recipe(data, size);
    return recipe.Byte() == 0xFF ? recipe.TakeRest() : fuzz::GenerateStream(&recipe);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const MemoryFile file(StreamOf(data, size));
    const h265tool::ExitStatus plain = h265tool::Inspect({file.Path(), false});
    FUZZ_CHECK(h265tool::Inspect({file.Path(), true}) == plain);
    return 0;
}
