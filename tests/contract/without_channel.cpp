// Without its channel the library does the same and prints nothing: without_channel <SPS NAL unit>.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "bitbuffer.h"
#include "h265.h"

namespace {

using Bytes = std::vector<unsigned char>;

// What a few functions, successful ones and failing ones, return.
std::vector<int> Results(const Bytes &sps_nal) {
    const auto sps = std::make_unique<sps_h265_t>();
    unsigned char bytes[8] = {};
    bitbuffer_t bb{bytes, 0, 64};
    DisplayBitBuffer(&bb, "BYTES");
    return {
        H265Lib_Parse_sps_nal(sps_nal.data(), sps_nal.size(), sps.get()),
        H265Lib_Parse_sps_nal(sps_nal.data(), sps_nal.size() / 2, sps.get()),
        H265Lib_Parse_sps_nal(sps_nal.data(), 3, sps.get()),
        H265Lib_SODB_deencapsulation_from_NAL(sps_nal.data(), 8, bytes, 4),
        H265Lib_format_au_delimiter_nalu(bytes, sizeof bytes, 0),
        H265Lib_format_au_delimiter_nalu(bytes, sizeof bytes, 3),
        H265Lib_format_end_of_sequence_nalu(bytes, sizeof bytes),
        H265Lib_format_end_of_sequence_nalu(nullptr, 0),
    };
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 2)
        return EXIT_FAILURE;
    std::ifstream file(argv[1], std::ios::binary);
    const Bytes sps_nal{std::istreambuf_iterator<char>(file), {}};

    int messages = 0;
    DbgTraceSetSink([](const DbgTraceMessage *, void *user) { ++*static_cast<int *>(user); }, &messages);
    g_hH265LibDbg->nMaxLevel = 8;
    const std::vector<int> traced = Results(sps_nal);
    const int messages_of_channel = messages;

    messages = 0;
    g_hH265LibDbg = nullptr;
    const std::vector<int> silent = Results(sps_nal);

    std::printf("%d messages with the channel, %d without\n", messages_of_channel, messages);
    const std::vector<int> expected = {TRUE, FALSE, FALSE, -1, 7, -1, 5, -1};
    return traced == expected && silent == expected && messages_of_channel > 0 && messages == 0
               ? EXIT_SUCCESS
               : EXIT_FAILURE;
}
