// Stamps every picture with precision time (MISB ST 0604), then reads the stamps of the result back and
// prints them.
//
//   stamp_precision_time IN OUT MICROSECONDS        since 1970, of the picture that is output first

#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

#include "annexb.h"
#include "h265.h"
#include "pictures.h"

namespace {

constexpr unsigned char kClockIsNotLocked = 0x9F;  // the status byte; its five low bits are always set
constexpr unsigned int kUserDataUnregistered = 5;  // payload type
constexpr std::array<unsigned char, 16> kPrecisionTime = {0xA8, 0x68, 0x7D, 0xD4, 0xD7, 0x59, 0x37, 0x58,
                                                          0xA5, 0xCE, 0xF0, 0x33, 0x8B, 0x65, 0x45, 0xF1};

// Whole seconds apart, so that no product grows large.
INT64 TimeOf(const picture &picture, INT64 first, const vui_h265_t &vui) {
    const UINT64 ticks = picture.number * vui.vui_num_units_in_tick;
    const UINT64 microseconds =
        ticks / vui.vui_time_scale * 1'000'000 + ticks % vui.vui_time_scale * 1'000'000 / vui.vui_time_scale;
    return first + static_cast<INT64>(microseconds);
}

bool Stamp(annexb_stream *stream, const picture_list &list, INT64 first, FILE *out) {
    if (pictures_rate(&list) == 0)
        return false;
    const picture *next = list.pictures;
    annexb_nal nal;
    while (annexb_next(stream, &nal)) {
        if (annexb_starts_picture(&nal)) {
            std::array<unsigned char, 64> sei;
            const INT64 time = TimeOf(*next++, first, list.sps->vui);
            const int length =
                H265Lib_formatMISPMicroSecondTimeSEI(sei.data(), sei.size(), &time, kClockIsNotLocked);
            if (length <= 0)
                return false;
            pictures_write_sei(out, sei.data(), static_cast<size_t>(length), &nal);
        }
        annexb_write(out, nal.bytes, nal.size);
    }
    return true;
}

// The time in a message: 16 bytes of UUID, the status byte, eight bytes of time with FF behind every second
// one.
std::optional<INT64> ReadTime(const unsigned char *payload, size_t size) {
    constexpr size_t kTime = kPrecisionTime.size() + 1;
    if (size < kTime + 11 || std::memcmp(payload, kPrecisionTime.data(), kPrecisionTime.size()) != 0)
        return std::nullopt;
    UINT64 time = 0;
    for (size_t i = 0; i < 11; i++) {
        if (i % 3 != 2)
            time = time << 8 | payload[kTime + i];
    }
    return static_cast<INT64>(time);
}

// The stamp of a SEI NAL unit, if it has one. The library tells where the messages are; this one it does not
// parse.
std::optional<INT64> FindTime(const annexb_nal &nal) {
    std::vector<unsigned char> data(nal.size);
    const int size = H265Lib_SODB_deencapsulation_from_NAL(
        nal.bytes + nal.header, static_cast<unsigned int>(nal.size - nal.header), data.data(),
        static_cast<unsigned int>(data.size()));
    int offset = 0;
    int header = 0;
    int kind = SUID_UNKNOWN;
    SEI_message_t message;
    BOOL more = TRUE;
    while (more && H265Lib_DetermineSEIType(nal.bytes, static_cast<int>(nal.size), &offset, &header, &message,
                                            &kind, &more)) {
        if (message.payload_type != kUserDataUnregistered || offset > size)
            continue;
        if (const auto time = ReadTime(data.data() + message.payload_index, message.payload_size))
            return time;
    }
    return std::nullopt;
}

// Prints the number of each picture in decoding order, and its stamp. False when one has none.
bool ReadBack(const char *path) {
    annexb_stream stream;
    if (annexb_load(&stream, path) != 0)
        return false;
    bool all_stamped = true;
    size_t number = 0;
    bool stamped = false;
    INT64 time = 0;
    annexb_nal nal;
    while (annexb_next(&stream, &nal)) {
        if (nal.type == NAL_PREFIX_SEI && nal.layer_id == 0) {
            if (const auto found = FindTime(nal)) {
                stamped = true;
                time = *found;
            }
        } else if (annexb_starts_picture(&nal)) {
            if (stamped)
                std::printf("%8zu  %" PRId64 "\n", number, time);
            all_stamped = all_stamped && stamped;
            stamped = false;
            number++;
        }
    }
    annexb_release(&stream);
    return all_stamped;
}

bool StampFile(const char *in, const char *out_path, INT64 first) {
    annexb_stream stream;
    if (annexb_load(&stream, in) != 0)
        return false;
    bool done = false;
    picture_list list;
    if (pictures_find(&list, &stream) == 0) {
        if (FILE *const out = annexb_create(out_path)) {
            const bool stamped = Stamp(&stream, list, first, out);
            done = annexb_close(out, out_path) == 0 && stamped;
        }
        pictures_release(&list);
    }
    annexb_release(&stream);
    return done;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: stamp_precision_time IN OUT MICROSECONDS\n");
        return EXIT_FAILURE;
    }
    const bool done = StampFile(argv[1], argv[2], std::strtoll(argv[3], nullptr, 10)) && ReadBack(argv[2]);
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
