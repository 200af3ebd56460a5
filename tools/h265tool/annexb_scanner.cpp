#include "annexb_scanner.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include "text.h"
#include "zero_pair.h"

namespace h265tool {
namespace {

using Bytes = std::span<const unsigned char>;

// "47 40 11 10": what a stream starts with in place of a start code.
std::string Hexadecimal(uint64_t leading_zeros, Bytes bytes) {
    constexpr size_t kShown = 4;
    std::string text;
    const auto append = [&text](unsigned int byte) {
        std::array<char, 4> digits{};
        std::snprintf(digits.data(), digits.size(), "%s%02x", text.empty() ? "" : " ", byte);
        text += digits.data();
    };
    for (uint64_t i = 0; i < std::min<uint64_t>(leading_zeros, 3); i++)
        append(0);
    for (const unsigned char byte : bytes.first(std::min(bytes.size(), kShown)))
        append(byte);
    return text;
}

}  // namespace

void AnnexBScanner::Scan(Bytes chunk) {
    while (!chunk.empty())
        chunk = zeros_ > 0 || !in_unit_ ? ScanZeros(chunk) : ScanUnit(chunk);
}

// Counts the run of zeros on, then decides by the byte behind it whether it was the start of a start code.
Bytes AnnexBScanner::ScanZeros(Bytes bytes) {
    const auto other = std::find_if(bytes.begin(), bytes.end(), [](unsigned char byte) { return byte != 0; });
    const auto run = static_cast<size_t>(other - bytes.begin());
    zeros_ += run;
    position_ += run;
    bytes = bytes.subspan(run);
    if (bytes.empty())
        return bytes;

    if (zeros_ >= 2 && bytes[0] == 1) {
        if (in_unit_)
            sink_.End();
        in_unit_ = true;
        const unsigned int start_code_length = zeros_ >= 3 ? 4 : 3;
        zeros_ = 0;
        position_++;
        sink_.Begin(position_ - start_code_length, start_code_length);
        return bytes.subspan(1);
    }
    if (!in_unit_)
        throw NotAByteStream(Text("no H.265 byte stream: it starts with ", Hexadecimal(zeros_, bytes),
                                  ", not with a start code"));
    PassZeros();
    return ScanUnit(bytes);
}

// Hands on the bytes in front of the next two zeros, or of a zero at the end of the chunk.
Bytes AnnexBScanner::ScanUnit(Bytes bytes) {
    size_t length = FindZeroPair(bytes);
    size_t zeros = 2;
    if (length == bytes.size()) {
        zeros = bytes.back() == 0 ? 1 : 0;
        length -= zeros;
    }
    if (length > 0)
        sink_.Bytes(bytes.first(length));
    zeros_ = zeros;
    position_ += length + zeros;
    return bytes.subspan(length + zeros);
}

// The zeros were neither part of a start code nor behind the NAL unit, but within it.
void AnnexBScanner::PassZeros() {
    static constexpr std::array<unsigned char, 4096> kZeros{};
    while (zeros_ > 0) {
        const size_t count = std::min<uint64_t>(zeros_, kZeros.size());
        sink_.Bytes(Bytes(kZeros).first(count));
        zeros_ -= count;
    }
}

void AnnexBScanner::Finish() {
    if (in_unit_)
        sink_.End();
    else if (position_ == 0)
        throw NotAByteStream("it is empty");
    else
        throw NotAByteStream("no H.265 byte stream: it holds no start code");
    in_unit_ = false;
}

}  // namespace h265tool
