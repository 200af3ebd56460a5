// FFmpeg's libavcodec, through its public functions: the parser of a stream, and the bitstream filter that
// rewrites parameter sets.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavutil/avutil.h>
#include <libavutil/opt.h>
}

#include <cstdarg>
#include <cstring>
#include <memory>

#include "../operation.h"
#include "../samples.h"

namespace bench {

namespace {

// av_parser_parse2 has no other way to say that it refuses something. That there is no picture behind a
// parameter set or a message is no error here.
int g_errors = 0;

void CountErrors(void *, int level, const char *format, va_list) {
    if (level <= AV_LOG_ERROR && std::strstr(format, "missing picture") == nullptr)
        g_errors++;
}

void Ignore(void *, int, const char *, va_list) {}

class Parser {
 public:
    Parser() : parser_(av_parser_init(AV_CODEC_ID_HEVC)), context_(avcodec_alloc_context3(nullptr)) {
        parser_->flags |= PARSER_FLAG_COMPLETE_FRAMES;
        context_->codec_id = AV_CODEC_ID_HEVC;
        context_->codec_type = AVMEDIA_TYPE_VIDEO;
    }
    Parser(const Parser &) = delete;
    Parser &operator=(const Parser &) = delete;
    ~Parser() {
        av_parser_close(parser_);
        avcodec_free_context(&context_);
    }
    // `nal` has AV_INPUT_BUFFER_PADDING_SIZE more bytes than `size`.
    bool Parse(const Bytes &nal, size_t size) {
        uint8_t *out = nullptr;
        int out_size = 0;
        const int used =
            av_parser_parse2(parser_, context_, &out, &out_size, nal.data(), static_cast<int>(size), 0, 0, 0);
        return used == static_cast<int>(size);
    }

 private:
    AVCodecParserContext *parser_;
    AVCodecContext *context_;
};

Bytes Padded(Bytes bytes) {
    bytes.resize(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE);
    return bytes;
}

void AddParser(const NalCase &parsed) {
    Add(parsed.name + "/ffmpeg", [&parsed] {
        const auto parser = std::make_shared<Parser>();
        for (const Bytes &nal : parsed.parameter_sets)
            parser->Parse(Padded(nal), nal.size());
        const Bytes padded = Padded(parsed.nal);
        g_errors = 0;
        av_log_set_callback(CountErrors);
        parser->Parse(padded, parsed.nal.size());
        av_log_set_callback(Ignore);
        return [parser, padded, size = parsed.nal.size(), accepted = g_errors == 0] {
            return parser->Parse(padded, size) && accepted;
        };
    });
}

class MetadataFilter {
 public:
    explicit MetadataFilter(const Bytes &nal) {
        av_bsf_alloc(av_bsf_get_by_name("hevc_metadata"), &context_);
        context_->par_in->codec_type = AVMEDIA_TYPE_VIDEO;
        context_->par_in->codec_id = AV_CODEC_ID_HEVC;
        const char *options[][2] = {{"sample_aspect_ratio", "40/33"}, {"video_full_range_flag", "0"},
                                    {"colour_primaries", "1"},        {"transfer_characteristics", "1"},
                                    {"matrix_coefficients", "1"},     {"tick_rate", "60000/1001"}};
        for (const auto &[name, value] : options)
            ready_ = av_opt_set(context_->priv_data, name, value, 0) == 0 && ready_;
        ready_ =
            av_bsf_init(context_) == 0 && av_new_packet(in_, static_cast<int>(nal.size())) == 0 && ready_;
        if (ready_)
            std::memcpy(in_->data, nal.data(), nal.size());
    }
    MetadataFilter(const MetadataFilter &) = delete;
    MetadataFilter &operator=(const MetadataFilter &) = delete;
    ~MetadataFilter() {
        av_bsf_free(&context_);
        for (AVPacket *packet : {in_, passed_, out_})
            av_packet_free(&packet);
    }
    // The packet is passed by reference: its bytes are not copied on the way in.
    bool Run() {
        if (!ready_ || av_packet_ref(passed_, in_) < 0 || av_bsf_send_packet(context_, passed_) < 0 ||
            av_bsf_receive_packet(context_, out_) < 0)
            return false;
        const int size = out_->size;
        av_packet_unref(out_);
        return size > 0;
    }

 private:
    AVBSFContext *context_ = nullptr;
    AVPacket *in_ = av_packet_alloc();
    AVPacket *passed_ = av_packet_alloc();
    AVPacket *out_ = av_packet_alloc();
    bool ready_ = true;
};

}  // namespace

void AddFfmpeg() {
    benchmark::AddCustomContext("ffmpeg", av_version_info());
    av_log_set_callback(Ignore);
    for (const auto *cases : {&ParameterSets(), &SliceHeaders(), &SeiMessages()}) {
        for (const NalCase &parsed : *cases)
            AddParser(parsed);
    }
    for (const NalCase &rewritten : RewrittenSps()) {
        Add(rewritten.name + "/ffmpeg", [&rewritten] {
            return [filter = std::make_shared<MetadataFilter>(rewritten.nal)] { return filter->Run(); };
        });
    }
}

}  // namespace bench
