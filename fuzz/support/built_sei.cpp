#include "support/built_sei.h"

#include "support/byte_stream.h"
#include "support/check.h"

namespace fuzz {

BuiltSei::BuiltSei(const Bytes &bytes) : nal(bytes) {
    FUZZ_CHECK(bytes.size() > 5 && Bytes(bytes.begin(), bytes.begin() + 5) == (Bytes{0, 0, 1, 0x4E, 1}));
    int payload_offset = 0;
    int nal_type_offset = 0;
    BOOL more = TRUE;
    FUZZ_CHECK(H265Lib_DetermineSEIType(nal.data(), nal.length(), &payload_offset, &nal_type_offset, &header,
                                        &suid, &more));
    FUZZ_CHECK(!more && nal_type_offset == 3);
    const Bytes sodb = Sodb(bytes);
    FUZZ_CHECK(size_t{header.payload_index} + header.payload_size + 1 == sodb.size());
    FUZZ_CHECK(sodb.back() == 0x80);
}

}  // namespace fuzz
