#include "support/sps_rewriting.h"

#include <gtest/gtest.h>

#include "h265d/rewriting/sps.h"
#include "support/sps_syntax.h"

namespace test {
namespace {

BitString Slice(const BitString &bits, size_t begin, size_t end) {
    BitString slice;
    for (size_t i = begin; i < end; i++)
        slice.U(1, bits[i]);
    return slice;
}

// A copy run: reported as a whole.
void AddRun(Syntax *syntax, const BitString &input, size_t begin, size_t end) {
    if (begin == end)
        return;
    syntax->Rest(Slice(input, begin, end - 1))
        .U(1, input[end - 1], kNotKept,
           "Failed to set " + std::to_string(end - begin) + " bits as string.\n");
}

size_t BehindUe(const BitString &input, size_t position) {
    size_t zeros = 0;
    while (!input[position + zeros])
        zeros++;
    return position + 2 * zeros + 1;
}

// The new VUI, the tail of the input and the padding.
void Finish(Syntax *syntax, const BitString &input, const sps_h265_t &sps) {
    AddWrittenVui(syntax, sps);
    const size_t begin = static_cast<size_t>(sps.sps_extension_present_offset);
    const size_t last_byte = input.size() - begin > 8 ? input.size() - 8 : begin;
    AddRun(syntax, input, begin, last_byte);
    syntax->Rest(Slice(input, last_byte, input.size() - 1))
        .U(1, input[input.size() - 1], kNotKept, "Failed to set StopBit.\n");
    while (syntax->bits().size() % 8 != 0)
        syntax->U(1, 0, kNotKept, "Failed to set padding bit.\n");
}

}  // namespace

ParsedSps::ParsedSps(const Bytes &sps_nal) : nal(sps_nal), sps(std::make_unique<sps_h265_t>()) {
    Bytes sodb(nal.size());
    const size_t header_offset = static_cast<size_t>(header());
    const int length = H265Lib_SODB_deencapsulation_from_NAL(
        nal.data() + header_offset, static_cast<unsigned int>(nal.size() - header_offset), sodb.data(),
        static_cast<unsigned int>(sodb.size()));
    for (int i = 0; i < length; i++)
        bits.U(8, sodb[static_cast<size_t>(i)]);
    EXPECT_EQ(H265Lib_Parse_sps_nal(nal.data(), nal.size(), sps.get()), TRUE);
}

Syntax ModifiedSps(const BitString &input, const sps_h265_t &sps) {
    const std::string size_not_set = "cannot parse pic_width_in_luma_samples.\n";
    const size_t flags = static_cast<size_t>(sps.ptl.general_scantype_bitoffset);
    const size_t size = static_cast<size_t>(sps.before_pic_num_samples_offset);

    Syntax syntax;
    AddRun(&syntax, input, 0, flags);
    syntax
        .Flag(sps.ptl.general_progressive_source_flag, kNotKept,
              Unwritable("general_progressive_source_flag"))
        .Flag(sps.ptl.general_interlaced_source_flag, kNotKept, Unwritable("general_interlaced_source_flag"))
        .Flag(0, kNotKept, "cannot parse general_non_packed_constraint_flag.\n")
        .Flag(0, kNotKept, Unwritable("general_frame_only_constraint_flag"));
    AddRun(&syntax, input, flags + 4, size);
    syntax.Ue(static_cast<uint32_t>(sps.pic_width_in_luma_samples), kNotKept, size_not_set)
        .Ue(static_cast<uint32_t>(sps.pic_height_in_luma_samples), kNotKept, size_not_set)
        .Flag(sps.conformance_window_flag, kNotKept, Unwritable("conformance_window_flag"));
    size_t behind = BehindUe(input, BehindUe(input, size)) + 1;
    if (sps.conformance_window_flag) {
        for (const UINT64 offset : {sps.conf_win_left_offset, sps.conf_win_right_offset,
                                    sps.conf_win_top_offset, sps.conf_win_bottom_offset}) {
            syntax.Ue(offset, kNotKept, size_not_set);
            behind = BehindUe(input, behind);
        }
    }
    AddRun(&syntax, input, behind, static_cast<size_t>(sps.vui_parameters_present_offset));
    Finish(&syntax, input, sps);
    return syntax;
}

Syntax SpsWithNewVui(const BitString &input, const sps_h265_t &sps) {
    Syntax syntax;
    AddRun(&syntax, input, 0, static_cast<size_t>(sps.vui_parameters_present_offset));
    Finish(&syntax, input, sps);
    return syntax;
}

const SpsRewriter kSpsModification = {"H265Lib_modify_sps_NAL", "_modify_sps_parameters",
                                      H265Lib_modify_sps_NAL, _modify_sps_parameters, ModifiedSps};
const SpsRewriter kSpsVuiReplacement = {"H265Lib_Set_sps_vui_parameters_NAL", "_set_sps_vui_parameters",
                                        H265Lib_Set_sps_vui_parameters_NAL, _set_sps_vui_parameters,
                                        SpsWithNewVui};

void PrintTo(const SpsRewriter &rewriter, std::ostream *out) {
    *out << rewriter.entry_point;
}

Bytes SpsRewriter::Rewritten(const Bytes &nal, const sps_h265_t &sps) const {
    unsigned char *buffer = nullptr;
    UINT length = 0;
    if (!rewrite_nal(nal.data(), static_cast<unsigned int>(nal.size()), &sps, &buffer, &length))
        return {};
    const Bytes result(buffer, buffer + length);
    H265Lib_Release_sps_buffer(buffer);
    return result;
}

int SpsRewriter::Result(const ParsedSps &input) const {
    Bytes sodb = input.bits.Bytes();
    Bytes result(sodb.size() + 256);
    bitbuffer_t reader{sodb.data(), 0, static_cast<unsigned int>(input.bits.size())};
    bitbuffer_t writer{result.data(), 0, static_cast<unsigned int>(result.size()) * 8};
    return rewrite(&reader, static_cast<int>(sodb.size()), input.sps.get(), &writer,
                   static_cast<int>(result.size()));
}

Bytes SpsRewriter::Expected(const ParsedSps &input, const sps_h265_t &sps) const {
    Bytes nal(input.nal.begin(), input.nal.begin() + input.header() + 2);
    const Bytes payload = Encapsulated(model(input.bits, sps).bits().Bytes());
    if (nal.size() + payload.size() <= input.nal.size() + 256)
        nal.insert(nal.end(), payload.begin(), payload.end());
    return nal;
}

Bytes RandomSps(Random *random) {
    const auto sps = std::make_unique<sps_h265_t>();
    const int chroma_format_idc = static_cast<int>(Below(random, 4));
    const SpsShape shape = {.max_sub_layers_minus1 = static_cast<int>(Below(random, 7)),
                            .ordering_info = Chance(random),
                            .chroma_format_idc = chroma_format_idc,
                            .conformance_window = Chance(random),
                            .log2_max_poc_lsb_minus4 = Below(random, 13),
                            .scaling_lists = static_cast<ScalingLists>(Below(random, 3)),
                            .pcm = Chance(random),
                            .short_term_sets = static_cast<int>(Below(random, 9)),
                            .long_term = Chance(random),
                            .long_term_pictures = static_cast<int>(Below(random, 4))};
    SpsSyntax syntax(sps.get());
    syntax.AddUpToExtensions(shape);
    sps->sps_max_sub_layers_minus1 = static_cast<unsigned char>(shape.max_sub_layers_minus1);
    sps->vui_parameters_present_flag = 1;
    FillVui(&sps->vui, shape.max_sub_layers_minus1, random);
    Syntax vui;
    AddWrittenVui(&vui, *sps);
    BitString bits = syntax.bits().Prefix(static_cast<size_t>(syntax.vui_position()));
    bits.Append(vui.bits());

    switch (Below(random, 4)) {
        case 0:
            bits.U(1, 0);
            break;
        case 1:  // the range extension
            bits.U(1, 1).U(8, 0x80).U(9, Below(random, 512));
            break;
        case 2:  // an extension of no bits
            bits.U(1, 1).U(8, 0);
            break;
        default:  // one of unknown syntax
            bits.U(1, 1).U(4, 0).U(4, 1 + Below(random, 15));
            for (uint64_t left = Below(random, 60); left > 0; left--)
                bits.U(1, Chance(random));
    }
    return NalUnit(kSpsNut, bits.TrailingBits().Bytes(), Chance(random) ? 3 : 4);
}

Bytes SpsWithTail(const BitString &tail) {
    const auto sps = std::make_unique<sps_h265_t>();
    SpsSyntax syntax(sps.get());
    syntax.AddUpToExtensions({});
    BitString bits = syntax.bits().Prefix(static_cast<size_t>(syntax.vui_position()));
    bits.U(1, 1).U(10, 0).Append(tail).TrailingBits();
    return NalUnit(kSpsNut, bits.Bytes());
}

}  // namespace test
