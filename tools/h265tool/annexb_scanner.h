// Finds the NAL units of a byte stream (ITU-T H.265 Annex B) that arrives in chunks of any size.
//
// Nothing is kept but a few counters, so neither the stream nor a NAL unit needs to fit into memory.

#ifndef H265TOOL_ANNEXB_SCANNER_H
#define H265TOOL_ANNEXB_SCANNER_H

#include <cstdint>
#include <span>
#include <stdexcept>

namespace h265tool {

// The stream is no byte stream of NAL units; what() says why.
class NotAByteStream : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// Takes what the scanner finds, in the order of the stream.
class NalUnitSink {
 public:
    NalUnitSink() = default;
    NalUnitSink(const NalUnitSink &) = delete;
    NalUnitSink &operator=(const NalUnitSink &) = delete;
    virtual ~NalUnitSink() = default;

    // A NAL unit begins: the position of the first byte of its start code, which has 3 or 4 bytes.
    virtual void Begin(uint64_t offset, unsigned int start_code_length) = 0;
    // More bytes of it, from the NAL unit header on. They are valid during the call only.
    virtual void Bytes(std::span<const unsigned char> bytes) = 0;
    virtual void End() = 0;
};

// A byte 00 right before 00 00 01 belongs to the start code; other zero bytes between NAL units belong to
// none. Every byte of the stream is either such a zero or handed to the sink.
class AnnexBScanner {
 public:
    explicit AnnexBScanner(NalUnitSink &sink) : sink_(sink) {}

    // Throws NotAByteStream when something other than zero bytes is in front of the first start code.
    void Scan(std::span<const unsigned char> chunk);

    // The stream ends here. Throws NotAByteStream when it holds no start code.
    void Finish();

 private:
    std::span<const unsigned char> ScanZeros(std::span<const unsigned char> bytes);
    std::span<const unsigned char> ScanUnit(std::span<const unsigned char> bytes);
    void PassZeros();

    NalUnitSink &sink_;
    uint64_t position_ = 0;  // bytes looked at so far
    uint64_t zeros_ = 0;     // zero bytes right before position_ that the sink was not given
    bool in_unit_ = false;
};

}  // namespace h265tool

#endif
