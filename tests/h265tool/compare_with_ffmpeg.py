#!/usr/bin/env python3
"""Compares `h265tool inspect --json` with what ffmpeg's trace_headers bitstream filter says of a stream.

    compare_with_ffmpeg.py SAMPLES_DIR TOOL...

Every syntax element of VPS, SPS, PPS, AUD and slice segment headers is compared, in both directions: each
must be there for both, with the same value. So are type, size and place of every SEI message, and what those hold
that h265tool reads. Exit status 77 when ffmpeg is not there.
"""

import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
FEWEST_FIELDS = 180  # of a stream: parameter sets alone have about as many

KINDS = {32: "vps", 33: "sps", 34: "pps", 35: "aud", 39: "sei", 40: "sei"}
KINDS.update({t: "slice" for t in [*range(0, 10), *range(16, 22)]})

# nal_unit_header( )
HEADER = {"forbidden_zero_bit", "nal_unit_type", "nuh_layer_id", "nuh_temporal_id_plus1"}

# Elements of the trace that the records have no field for, by kind.
TRAILING = {"rbsp_stop_one_bit", "rbsp_alignment_zero_bit"}
NO_FIELD = {
    "vps": TRAILING,
    "sps": TRAILING,
    "pps": TRAILING,
    "aud": TRAILING,
    # slice_reserved_flag is read and dropped; the rest is behind slice_pic_order_cnt_lsb
    "slice": TRAILING | {
        "slice_reserved_flag", "short_term_ref_pic_set_sps_flag", "num_negative_pics", "num_positive_pics",
        "delta_poc_s0_minus1", "used_by_curr_pic_s0_flag", "delta_poc_s1_minus1", "used_by_curr_pic_s1_flag",
        "slice_temporal_mvp_enabled_flag", "slice_sao_luma_flag", "slice_sao_chroma_flag",
        "num_ref_idx_active_override_flag", "num_ref_idx_l0_active_minus1", "num_ref_idx_l1_active_minus1",
        "mvd_l1_zero_flag", "collocated_from_l0_flag", "collocated_ref_idx", "luma_log2_weight_denom",
        "delta_chroma_log2_weight_denom", "luma_weight_l0_flag", "chroma_weight_l0_flag",
        "delta_luma_weight_l0", "luma_offset_l0", "delta_chroma_weight_l0", "chroma_offset_l0",
        "luma_weight_l1_flag", "chroma_weight_l1_flag", "delta_luma_weight_l1", "luma_offset_l1",
        "delta_chroma_weight_l1", "chroma_offset_l1", "five_minus_max_num_merge_cand", "slice_qp_delta",
        "slice_cb_qp_offset", "slice_cr_qp_offset", "deblocking_filter_override_flag",
        "slice_deblocking_filter_disabled_flag", "slice_beta_offset_div2", "slice_tc_offset_div2",
        "slice_loop_filter_across_slices_enabled_flag", "num_entry_point_offsets", "offset_len_minus1",
        "entry_point_offset_minus1", "alignment_bit_equal_to_one", "alignment_bit_equal_to_zero",
    },
}

# Record fields whose names differ from those of the trace.
RENAMED = {
    "vps_num_layer_sets_minus1": "vps_num_layers_sets_minus1",
    "vps_extension_flag": "vps_extenstion_flag",
    "vps_extension_data_flag": "vps_extenstion_data_flag",
    "sps_seq_parameter_set_id": "seq_parameter_set_id",
    "sample_adaptive_offset_enabled_flag": "sample_adaptive_offset_flag",
    "num_short_term_ref_pic_sets": "num_short_term_ref_pics_sets",
    "matrix_coefficients": "matrix_coeffs",
    "used_by_curr_pic_flag": "used_by_current_pic_flag",
    "use_delta_flag": "used_delta_flag",
    "used_by_curr_pic_s0_flag": "used_by_current_pic_s0_flag",
    "used_by_curr_pic_s1_flag": "used_by_current_pic_s1_flag",
    "used_by_curr_pic_lt_sps_flag": "used_by_current_pic_lt_sps_flag",
    "sub_layer_non_packed_constraint_flag": "sub_layer_non_packed_constrained_flag",
    "sub_layer_frame_only_constraint_flag": "sub_layer_frame_only_constrained_flag",
}

SUB_LAYER_HRD = {"bit_rate_value_minus1", "cpb_size_value_minus1", "cpb_size_du_value_minus1",
                 "bit_rate_du_value_minus1", "cbr_flag"}
HRD = SUB_LAYER_HRD | {
    "nal_hrd_parameters_present_flag", "vcl_hrd_parameters_present_flag", "sub_pic_hrd_params_present_flag",
    "tick_divisor_minus2", "du_cpb_removal_delay_increment_length_minus1",
    "sub_pic_cpb_params_in_pic_timing_sei_flag", "dpb_output_delay_du_length_minus1", "bit_rate_scale",
    "cpb_size_scale", "cpb_size_du_scale", "initial_cpb_removal_delay_length_minus1",
    "au_cpb_removal_delay_length_minus1", "dpb_output_delay_length_minus1", "fixed_pic_rate_general_flag",
    "fixed_pic_rate_within_cvs_flag", "elemental_duration_in_tc_minus1", "low_delay_hrd_flag",
    "cpb_cnt_minus1",
}
STRPS = {"inter_ref_pic_set_prediction_flag", "delta_rps_sign", "abs_delta_rps_minus1",
         "used_by_current_pic_flag", "used_delta_flag", "num_negative_pics", "num_positive_pics",
         "delta_poc_s0_minus1", "used_by_current_pic_s0_flag", "delta_poc_s1_minus1",
         "used_by_current_pic_s1_flag"}
VUI = {"aspect_ratio_info_present_flag", "aspect_ratio_idc", "sar_width", "sar_height",
       "overscan_info_present_flag", "overscan_appropriate_flag", "video_signal_type_present_flag",
       "video_format", "video_full_range_flag", "colour_description_present_flag", "colour_primaries",
       "transfer_characteristics", "matrix_coeffs", "chroma_loc_info_present_flag",
       "chroma_sample_loc_type_top_field", "chroma_sample_loc_type_bottom_field",
       "neutral_chroma_indication_flag", "field_seq_flag", "frame_field_info_present_flag",
       "default_display_window_flag", "def_disp_win_left_offset", "def_disp_win_right_offset",
       "def_disp_win_top_offset", "def_disp_win_bottom_offset", "vui_timing_info_present_flag",
       "vui_num_units_in_tick", "vui_time_scale", "vui_poc_proportional_to_timing_flag",
       "vui_num_ticks_poc_diff_one_minus1", "vui_hrd_parameters_present_flag", "bitstream_restriction_flag",
       "tiles_fixed_structure_flag", "motion_vectors_over_pic_boundaries_flag",
       "restricted_ref_pic_lists_flag", "min_spatial_segmentation_idc", "max_bytes_per_pic_denom",
       "max_bits_per_min_cu_denom", "log2_max_mv_length_horizontal", "log2_max_mv_length_vertical"}

PTL_BITS = re.compile(r"(general|sub_layer)_((?:max_\w+|intra|one_picture_only|lower_bit_rate)_constraint_flag"
                      r"|reserved_zero_(?:7|33|34|35|43)bits)$")


class UnitFields:
    """The elements of one NAL unit in ffmpeg's trace, put under the paths of the record fields."""

    def __init__(self, kind):
        self.kind = kind
        self.fields = {}
        self.problems = []
        self.next_2bits = 0  # of reserved_zero_2bits, which the trace does not number
        self.strps = 0
        self.vps_hrd = 0
        self.hrd_sub_layer = 0
        self.scaling_list_next = 8

    def add(self, name, index, value, bits, _position):
        if name in NO_FIELD[self.kind]:
            return
        name = RENAMED.get(name, name)
        path, value = self.place(name, index, value, bits)
        if path in self.fields:
            self.problems.append(f"ffmpeg has {path} twice")
        self.fields[path] = value

    def place(self, name, index, value, bits):
        brackets = "".join(f"[{i}]" for i in index)
        if self.kind in ("vps", "sps"):
            if name.startswith(("general_", "sub_layer_")) or name == "reserved_zero_2bits":
                return self.place_in_ptl(name, index, value, bits)
            if name in HRD:
                return self.place_in_hrd(name, index), value
        if self.kind == "vps" and name == "hrd_layer_set_idx":
            self.vps_hrd = index[0]
        if self.kind == "sps" and name in STRPS:
            if name == "inter_ref_pic_set_prediction_flag":
                self.strps += 1
            return f"strps[{self.strps}].{name}{brackets}", value
        if self.kind == "sps" and name in VUI:
            return f"vui.{name}{brackets}", value
        if name.startswith("scaling_list_") and name != "scaling_list_enabled_flag":
            return self.place_in_scaling_list(name, index, brackets, value)
        return name + brackets, value

    def place_in_ptl(self, name, index, value, bits):
        sub_layers = self.fields.get(f"{self.kind}_max_sub_layers_minus1", 0)
        if name == "reserved_zero_2bits":
            self.next_2bits += 1
            return f"ptl.{name}[{sub_layers + self.next_2bits - 1}]", value
        brackets = "".join(f"[{i}]" for i in index)
        match = PTL_BITS.match(name)
        own = {"general_non_packed_constraint_flag", "general_frame_only_constraint_flag"}
        if match is None or name in own:
            return f"ptl.{name}{brackets}", value
        group, field = match.groups()
        field = re.sub(r"max_(\d+)bit_", r"max_\1bits_", field).replace("lower_bit_rate", "lower_bitrate")
        union = "ptl.u_" + group + brackets
        if field == "reserved_zero_43bits":
            path = f"{union}.{field}"
        elif field in ("reserved_zero_7bits", "reserved_zero_35bits"):
            path = f"{union}.profile_2.{field}"
        elif f"{union}.profile_2.reserved_zero_7bits" in self.fields:
            path = f"{union}.profile_2.{field}"
        else:
            path = f"{union}.profile_4_10.{field}"
        # more than 32 bits are traced in pieces
        if path in self.fields:
            value |= self.fields.pop(path) << len(bits)
        return path, value

    def place_in_hrd(self, name, index):
        hrd = f"vps_hrd_parameters[{self.vps_hrd}]" if self.kind == "vps" else "vui.nal_hrd"
        brackets = "".join(f"[{i}]" for i in index)
        if name == "fixed_pic_rate_general_flag":
            self.hrd_sub_layer = index[0]
        if name not in SUB_LAYER_HRD:
            return f"{hrd}.{name}{brackets}"
        # neither sub-layer nor kind are in the trace: NAL comes first where there is one
        path = f"{hrd}.s_l_nal_hrd_parameters[{self.hrd_sub_layer}].{name}{brackets}"
        if path in self.fields or not self.fields.get(f"{hrd}.nal_hrd_parameters_present_flag"):
            path = path.replace("s_l_nal", "s_l_vcl")
        return path

    def place_in_scaling_list(self, name, index, brackets, value):
        inside, coefficients = ("scaling_list.", "ScalingList") if self.kind == "sps" else ("", "scaling_list")
        if name == "scaling_list_pred_mode_flag":
            self.scaling_list_next = 8
        elif name == "scaling_list_dc_coef_minus8":
            self.scaling_list_next = value + 8
        elif name == "scaling_list_delta_coeff":  # the records have the coefficients, and the last delta
            if self.kind == "sps":
                self.fields[inside + "scaling_list_delta_coef"] = value
            self.scaling_list_next = (self.scaling_list_next + value + 256) % 256
            return f"{inside}{coefficients}{brackets}", self.scaling_list_next
        return f"{inside}{name}{brackets}", value


class SeiFields:
    """The same of a SEI NAL unit, whose messages are a list."""

    READ = {1: "pic_timing", 129: "active_parameter_sets", 136: "time_code"}
    RENAMED = {"num_clock_ts": "num_clocks_ts", "cnt_dropped_flag": "cnt_drop_flag"}
    BEHIND_PAYLOAD = TRAILING | {"bit_equal_to_one", "bit_equal_to_zero", "reserved_payload_extension_data"}

    def __init__(self, kind):
        self.kind = kind
        self.problems = []
        self.fields = {}
        self.messages = 0
        self.sum = 0  # of the bytes 0xFF in front of the last byte of a type or size
        self.type = None
        self.user_data = []  # of the message, which the trace has byte by byte

    def add(self, name, index, value, _bits, position):
        message = f"[{self.messages - 1}]"
        if name == "ff_byte":
            self.sum += value
        elif name == "last_payload_type_byte":
            self.finish()
            self.type, self.sum = self.sum + value, 0
            self.fields[f"[{self.messages}].payload_type"] = self.type
            self.messages += 1
        elif name == "last_payload_size_byte":
            self.fields[f"{message}.payload_size"] = self.sum + value
            self.fields[f"{message}.payload_index"] = position // 8 + 1 - 2  # behind the NAL unit header
            self.sum = 0
        elif name not in self.BEHIND_PAYLOAD:
            if self.type in (4, 5):
                self.user_data.append(value)
            elif self.type in self.READ:
                brackets = "".join(f"[{i}]" for i in index)
                self.fields[f"{message}.{self.READ[self.type]}.{self.RENAMED.get(name, name)}{brackets}"] = value

    def finish(self):
        """The last message is complete."""
        data, self.user_data = self.user_data, []
        known = {}
        if self.type == 5:
            digits = bytes(data[:16]).hex()
            uuid = "-".join([digits[:8], digits[8:12], digits[12:16], digits[16:20], digits[20:]])
            known["user_data_unregistered"] = {"uuid_iso_iec_11578": uuid}
        elif self.type == 4:
            fields = {"itu_t_t35_country_code": data[0], "itu_t_t35_provider_code": data[1] * 256 + data[2],
                      "user_identifier": int.from_bytes(data[3:7], "big")}
            if bytes(data[3:8]) == b"GA94\3":
                end = 10 + 3 * (data[8] & 0x1F)
                known["captions"] = fields | {
                    "user_data_type_code": data[7],
                    "cc_data": {"process_cc_data_flag": data[8] >> 6 & 1, "cc_count": data[8] & 0x1F,
                                "marker_bits": data[end]},
                    "cc_bytes": [{"flag": data[i] >> 2 & 1, "type": data[i] & 3, "data1": data[i + 1],
                                  "data2": data[i + 2]} for i in range(10, end, 3)]}
            elif bytes(data[3:7]) == b"DTG1":
                known["afd"] = fields | {
                    "afd_data": {"active_format_flag": data[7] >> 6 & 1, "active_format": data[8] & 0x0F}}
        self.fields.update(flattened(known, f"[{self.messages - 1}]"))
        self.type = None


def ffmpeg_units(stream):
    """The header fields of all NAL units of a stream, and UnitFields of the kinds compared."""
    command = ["ffmpeg", "-v", "trace", "-nostdin", "-f", "hevc", "-i", stream, "-c", "copy", "-bsf:v",
               "trace_headers", "-f", "null", "-"]
    trace = subprocess.run(command, capture_output=True, text=True, errors="replace", check=True).stderr
    element = re.compile(r"(\d+) +(\w+)((?:\[\d+\])*) +([01]+) = (-?\d+)$")
    headers, units, unit = [], [], None
    in_packets = False  # in front of the first packet the parameter sets are traced as extradata
    for line in re.split(r"[\r\n]", trace):
        _, marker, text = line.partition("[trace_headers @ ")
        if not marker:
            continue
        text = text.partition("] ")[2].strip()
        if text.startswith("Packet:"):
            in_packets = True
        if not in_packets:
            continue
        if match := element.match(text):
            name, index, bits = match.group(2, 3, 4)
            position, value = int(match.group(1)), int(match.group(5))
            if name == "forbidden_zero_bit":
                headers.append([])
                unit = None
            elif name in HEADER:
                headers[-1].append(value)
                if name == "nal_unit_type" and value in KINDS:
                    unit = (SeiFields if KINDS[value] == "sei" else UnitFields)(KINDS[value])
                    units.append(unit)
            elif unit:
                unit.add(name, [int(i) for i in re.findall(r"\d+", index)], value, bits, position)
    return headers, units


def flattened(value, path=""):
    if isinstance(value, dict):
        for key, inner in value.items():
            yield from flattened(inner, f"{path}.{key}" if path else key)
    elif isinstance(value, list):
        for i, inner in enumerate(value):
            yield from flattened(inner, f"{path}[{i}]")
    elif value is not None:
        yield path, value


def places(stream):
    """(offset, size, start code length) of each NAL unit, by a plain search."""
    data = pathlib.Path(stream).read_bytes()
    starts = [match.start() for match in re.finditer(b"\0\0\1", data)]
    for start, following in zip(starts, [*starts[1:], len(data)]):
        end = start + 3 + len(data[start + 3:following].rstrip(b"\0"))
        zero_byte = start > 0 and data[start - 1] == 0
        yield start - zero_byte, end - start + zero_byte, 3 + zero_byte


def compare(stream, tool):
    """The number of fields compared and the differences."""
    run = subprocess.run([*tool, "inspect", "--json", stream], capture_output=True, text=True)
    differences = []
    if run.returncode != 0 or run.stderr:
        differences.append(f"exit status {run.returncode}: {run.stderr.strip()}")
    units = [json.loads(line) for line in run.stdout.splitlines()]
    headers, expected_units = ffmpeg_units(stream)

    def differ(what, expected, actual):
        if expected != actual:
            differences.append(f"{what}: ffmpeg has {expected}, h265tool {actual}")

    differ("NAL units", headers,
           [[u["nal_unit_type"], u["nuh_layer_id"], u["temporal_id"] + 1] for u in units])
    if list(places(stream)) != [(u["offset"], u["size"], u["start_code"]) for u in units]:
        differences.append("offset, size or start_code are wrong")
    known = [u for u in units if u["nal_unit_type"] in KINDS]
    differ("number of units to compare", len(expected_units), len(known))

    count = 0
    for unit, expected in zip(known, expected_units):
        where = f"{expected.kind} at {unit['offset']}"
        differences += [f"{where}: {problem}" for problem in expected.problems]
        if expected.kind not in unit:
            differences.append(f"{where}: no '{expected.kind}' but {unit.get('error')}")
            continue
        actual = dict(flattened(unit[expected.kind]))
        if expected.kind == "sei":
            expected.finish()
            for path in [path for path in actual if path.endswith(".payload_name")]:  # not in the trace
                del actual[path]
        if expected.kind == "aud":  # the record's copy of the header field
            expected.fields["nal_type"] = unit["nal_unit_type"]
        for path in {**expected.fields, **actual}:
            differ(f"{where}: {path}", expected.fields.get(path), actual.get(path))
            count += 1
    if count < FEWEST_FIELDS:
        differences.append(f"only {count} fields compared")
    return count, differences


def main():
    if shutil.which("ffmpeg") is None:
        print("SKIPPED: ffmpeg is not there")
        return SKIPPED
    samples, tool = pathlib.Path(sys.argv[1]), sys.argv[2:]
    streams = {sample.name: sample for sample in sorted(samples.glob("*.hevc"))}
    with tempfile.TemporaryDirectory() as directory:
        # a unit of a kind that the encoder does not write, in front of a stream that replaces it
        heavy = pathlib.Path(directory, "sps-heavy.hevc")
        heavy.write_bytes((samples / "units/sps-heavy.nal").read_bytes() + streams["slices.hevc"].read_bytes())
        streams["units/sps-heavy.nal + slices.hevc"] = heavy
        several = pathlib.Path(directory, "sei.hevc")
        sei = b"".join((samples / f"units/sei-{name}.nal").read_bytes() for name in ("multiple", "time-code"))
        several.write_bytes(sei + streams["slices.hevc"].read_bytes())
        streams["units/sei-*.nal + slices.hevc"] = several
        total, failed = 0, False
        for name, stream in streams.items():
            count, differences = compare(str(stream), tool)
            total += count
            failed |= bool(differences)
            print(f"{name}: {count} fields, {len(differences)} differences")
            for difference in differences:
                print(f"  {difference}")
    print(f"{len(streams)} streams, {total} fields compared")
    return 1 if failed or len(streams) < 2 else 0


if __name__ == "__main__":
    sys.exit(main())
