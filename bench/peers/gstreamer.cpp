// GStreamer's H.265 parser of libgstcodecparsers, from the bytes of a NAL unit on.

#define GST_USE_UNSTABLE_API
#include <gst/codecparsers/gsth265parser.h>
#include <gst/gst.h>

#include <memory>

#include "../operation.h"
#include "../samples.h"
#include "../sei_building.h"

namespace bench {

namespace {

// A parser that knows some parameter sets, and the records it fills.
class Parser {
 public:
    explicit Parser(const std::vector<Bytes> &parameter_sets) {
        for (const Bytes &nal : parameter_sets) {
            // parse_nal would leave out the VUI of an SPS
            GstH265NalUnit unit;
            if (Identify(nal, &unit) && unit.type == GST_H265_NAL_SPS)
                gst_h265_parser_parse_sps(parser_, &unit, &sps_, TRUE);
            else
                gst_h265_parser_parse_nal(parser_, &unit);
        }
    }
    Parser(const Parser &) = delete;
    Parser &operator=(const Parser &) = delete;
    ~Parser() { gst_h265_parser_free(parser_); }

    bool ParseVps(const Bytes &nal) {
        GstH265NalUnit unit;
        return Identify(nal, &unit) && gst_h265_parse_vps(&unit, &vps_) == GST_H265_PARSER_OK;
    }
    bool ParseSps(const Bytes &nal) {
        GstH265NalUnit unit;
        return Identify(nal, &unit) && gst_h265_parse_sps(parser_, &unit, &sps_, TRUE) == GST_H265_PARSER_OK;
    }
    bool ParsePps(const Bytes &nal) {
        GstH265NalUnit unit;
        return Identify(nal, &unit) && gst_h265_parse_pps(parser_, &unit, &pps_) == GST_H265_PARSER_OK;
    }
    bool ParseSliceHeader(const Bytes &nal) {
        GstH265NalUnit unit;
        if (!Identify(nal, &unit) ||
            gst_h265_parser_parse_slice_hdr(parser_, &unit, &slice_) != GST_H265_PARSER_OK)
            return false;
        gst_h265_slice_hdr_free(&slice_);
        return true;
    }
    // The messages, for g_array_unref; nullptr when they are refused.
    GArray *Messages(const Bytes &nal) {
        GstH265NalUnit unit;
        GArray *messages = nullptr;
        if (Identify(nal, &unit) &&
            gst_h265_parser_parse_sei(parser_, &unit, &messages) == GST_H265_PARSER_OK)
            return messages;
        g_clear_pointer(&messages, g_array_unref);
        return nullptr;
    }
    bool ParseSei(const Bytes &nal) {
        GArray *messages = Messages(nal);
        if (messages == nullptr)
            return false;
        const bool one = messages->len == 1;
        g_array_unref(messages);
        return one;
    }

 private:
    // The NAL unit goes on to the end of the bytes: no start code is looked for.
    bool Identify(const Bytes &nal, GstH265NalUnit *unit) {
        return gst_h265_parser_identify_nalu_unchecked(parser_, nal.data(), 0, nal.size(), unit) ==
               GST_H265_PARSER_OK;
    }

    GstH265Parser *parser_ = gst_h265_parser_new();
    GstH265VPS vps_{};
    GstH265SPS sps_{};
    GstH265PPS pps_{};
    GstH265SliceHdr slice_{};
};

void AddParser(const NalCase &parsed, bool (Parser::*parse)(const Bytes &)) {
    Add(parsed.name + "/gstreamer", [&parsed, parse] {
        return [parser = std::make_shared<Parser>(parsed.parameter_sets), &nal = parsed.nal, parse] {
            return (parser.get()->*parse)(nal);
        };
    });
}

// Builds from its own records what the library builds from its own; the result has to be the same.
class SeiBuilder {
 public:
    explicit SeiBuilder(const Bytes &nal) : messages_(Parser({}).Messages(nal)) {
        GstMemory *built = Build();
        GstMapInfo map;
        if (built == nullptr || !gst_memory_map(built, &map, GST_MAP_READ))
            return;
        same_ = Bytes(map.data, map.data + map.size) == nal;
        gst_memory_unmap(built, &map);
        gst_memory_unref(built);
    }
    SeiBuilder(const SeiBuilder &) = delete;
    SeiBuilder &operator=(const SeiBuilder &) = delete;
    ~SeiBuilder() { g_clear_pointer(&messages_, g_array_unref); }

    bool Run() {
        GstMemory *built = Build();
        if (built == nullptr)
            return false;
        gst_memory_unref(built);
        return same_;
    }

 private:
    GstMemory *Build() {
        return messages_ == nullptr ? nullptr : gst_h265_create_sei_memory(0, 1, 3, messages_);
    }

    GArray *messages_;
    bool same_ = false;
};

}  // namespace

void AddGStreamer() {
    gst_init(nullptr, nullptr);
    gchar *version = gst_version_string();
    benchmark::AddCustomContext("gstreamer", version);
    g_free(version);
    for (const NalCase &parsed : ParameterSets()) {
        AddParser(parsed, parsed.name.starts_with("vps")   ? &Parser::ParseVps
                          : parsed.name.starts_with("sps") ? &Parser::ParseSps
                                                           : &Parser::ParsePps);
    }
    for (const NalCase &slice : SliceHeaders())
        AddParser(slice, &Parser::ParseSliceHeader);
    for (const NalCase &message : SeiMessages())
        AddParser(message, &Parser::ParseSei);
    for (const BuiltSei &built : BuiltSeis()) {
        Add(built.name + "/gstreamer", [built] {
            return [builder = std::make_shared<SeiBuilder>(built.nal)] { return builder->Run(); };
        });
    }
}

}  // namespace bench
