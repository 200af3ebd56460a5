#!/bin/bash
# Makes the sample streams: small H.265 Annex B elementary streams of synthetic pictures.
#
#   scripts/make_samples.sh [OUTDIR]        (default: tests/samples of this tree)
#
# Needs ffmpeg and x265. The same versions of both give the same bytes on every run: one frame
# thread, no thread pool where rate control looks at timing, no text about the encoder's build.
set -euo pipefail

tree=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
out=${1:-$tree/tests/samples}
limit=100000 # bytes; no binary of the tree is larger
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$out" "$work/made"

# picture NAME SIZE RATE FRAMES FORMAT [FILTER]: synthetic pictures for `encode`
picture() {
  ffmpeg -v error -nostdin -y -bitexact -f lavfi -i "testsrc2=s=$2:r=$3${6:+,$6}" -frames:v "$4" \
    -pix_fmt "$5" -strict -1 -f yuv4mpegpipe "$work/$1.y4m"
}

# encode SAMPLE PICTURE [x265 option...]
encode() {
  local sample=$1 source=$2
  shift 2
  timeout 60 x265 --input "$work/$source.y4m" --output "$work/made/$sample.hevc" \
    --no-info --frame-threads 1 --no-progress --log-level error "$@"
}

# encode_serial: `encode` with no wavefronts and no threads, which makes rate control repeatable
encode_serial() {
  encode "$@" --no-wpp --pools none
}

# scaling_lists: lists that differ in every size and matrix, so that each is coded in full
scaling_lists() {
  local size matrix k count values
  local -a matrices=(INTRA%s_LUMA INTRA%s_CHROMAU INTRA%s_CHROMAV INTER%s_LUMA INTER%s_CHROMAU INTER%s_CHROMAV)
  for size in 4 8 16 32; do
    count=$((size == 4 ? 16 : 64))
    for matrix in "${!matrices[@]}"; do
      local name=${matrices[matrix]/\%s/${size}X${size}}
      values=
      for ((k = 0; k < count; k++)); do
        values+="$((16 + (k * (matrix + 1) + size) % 37)),"
      done
      printf '%s =\n%s\n' "$name" "$values"
      if ((size >= 16)); then
        printf '%s_DC =\n%d,\n' "$name" $((16 + matrix))
      fi
    done
  done
}

# odd_parity BYTE: a CTA-608 byte as two hexadecimal digits with its parity bit
odd_parity() {
  local byte=$1 ones=0 bit
  for ((bit = 0; bit < 7; bit++)); do
    ones=$((ones + (byte >> bit & 1)))
  done
  printf '%02x' $((byte | (ones % 2 == 0 ? 0x80 : 0)))
}

# message POC HEX: one line of the encoder's list of SEI messages. It decodes base64 in groups and
# keeps the padding as zero bytes, so a payload must be a multiple of three bytes.
message() {
  local hex=$2
  while ((${#hex} % 6 != 0)); do
    hex+=ff
  done
  printf '%d PREFIX 39/4 %s\n' "$1" "$(basenc --base16 -d <<<"${hex^^}" | base64 -w0)"
}

# user_data FRAMES: A/53 captions for every picture except each fourth, which has the active format
user_data() {
  local -a codes=(14 20 14 2e 14 70 48 45 4c 4c 4f 2e 14 2f) # load, erase, row 15, HELLO., show
  local frame next=0 first second cc i
  for ((frame = 0; frame < $1; frame++)); do
    if ((frame % 4 == 3)); then
      message "$frame" b500314454473141f8
      continue
    fi
    first=$(odd_parity "0x${codes[next]:-0}")
    second=$(odd_parity "0x${codes[next + 1]:-0}")
    next=$((next + 2))
    cc="fc$first$second""f98080"
    for ((i = 2; i < 20; i++)); do
      cc+=fa0000
    done
    message "$frame" "b5003147413934""03d4ff${cc}ff"
  done
}

picture small 208x120 25 12 yuv420p
picture few 160x96 25 4 yuv420p
picture long 160x96 30000/1001 40 yuv420p
picture fading 160x96 25 12 yuv420p fade=out:0:12
picture odd 158x90 25 4 yuv420p
picture fields 208x120 60000/1001 16 yuv420p
picture ntsc 208x120 30000/1001 16 yuv420p
picture slices 208x112 25 6 yuv420p
picture pow2 256x128 25 6 yuv420p
picture gray 160x96 25 5 gray
picture p422-10 160x96 25 5 yuv422p10le
picture p444-8 160x96 25 5 yuv444p
picture p444-12 160x96 25 5 yuv444p12le
picture p420-10 208x120 50 6 yuv420p10le
scaling_lists >"$work/scaling-lists.txt"
user_data 16 >"$work/user-data.txt"

vbv=(--hrd --vbv-maxrate 300 --vbv-bufsize 300 --bitrate 250)
bt709=(--colorprim bt709 --transfer bt709 --colormatrix bt709)

# Timing, buffering and the VUI
encode_serial progressive-hrd-vui small --preset fast "${vbv[@]}" --aud --keyint 6 \
  --sar 1 --videoformat component --range limited "${bt709[@]}" --chromaloc 0
encode_serial interlaced-field-hrd fields --preset fast --interlace tff "${vbv[@]}" --aud --keyint 8
encode vui-extended-sar odd --preset fast --sar 123:457 --overscan crop --videoformat pal \
  --range full --colorprim bt470bg --transfer bt470bg --colormatrix bt470bg --chromaloc 2 \
  --display-window 2,4,6,8
encode hdr10 p420-10 --preset fast -D 10 --hdr10 --hdr10-opt --repeat-headers --qp 30 \
  --master-display 'G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,1)' \
  --max-cll 1000,400 --colorprim bt2020 --transfer smpte2084 --colormatrix bt2020nc --chromaloc 2

# Formats
encode 10bit-422 p422-10 --preset fast -D 10 --qp 30
encode monochrome-400 gray --preset fast --input-csp i400 --qp 30 --hash 2
encode 444-8bit p444-8 --preset fast --qp 30 --hash 3
encode 444-12bit p444-12 --preset fast -D 12 --qp 36

# Slices need wavefronts in this encoder; a constant QP keeps threads out of the result
encode slices slices --preset fast --qp 32 --ctu 16 --slices 3 --wpp --pools 2
encode slices-pow2 pow2 --preset fast --qp 32 --ctu 16 --slices 4 --wpp --pools 2

# References, random access and layers
encode temporal-layers long --preset fast --qp 34 --temporal-layers --bframes 7 --b-adapt 0 --b-pyramid
encode long-references long --preset slow --qp 32 --keyint 250 --bframes 8 --ref 6 --b-pyramid
encode open-gop small --preset fast --qp 34 --aud --repeat-headers --keyint 4 --min-keyint 4 \
  --bframes 3 --b-adapt 0 --open-gop
encode closed-gop small --preset ultrafast --qp 34 --aud --repeat-headers --keyint 6 --min-keyint 6 \
  --bframes 3 --b-adapt 0 --no-open-gop --radl 2 --ref 2
cat "$work/made/open-gop.hevc" "$work/made/closed-gop.hevc" >"$work/made/repeated-headers.hevc"
rm "$work/made/open-gop.hevc" "$work/made/closed-gop.hevc"

# Coding tools that parameter sets and slice headers show
encode scaling-lists small --preset fast --qp 32 -f 5 --scaling-list "$work/scaling-lists.txt"
encode weighted-prediction fading --preset slow --qp 32 --weightp --weightb
encode coding-tools small --preset medium --qp 32 -f 5 --tskip --signhide --cu-lossless --amp --rect \
  --constrained-intra --cbqpoffs 3 --crqpoffs -3 --deblock 2:-2

# Messages
encode hash-sei few --preset ultrafast --qp 34 --hash 1
encode captions-a53 ntsc --preset fast --qp 34 --nalu-file "$work/user-data.txt" --aud

for stream in "$work"/made/*.hevc; do
  size=$(stat -c %s "$stream")
  if ((size == 0 || size > limit)); then
    echo "${stream##*/}: $size bytes, which is not within 1 to $limit" >&2
    exit 1
  fi
done
cp "$work"/made/*.hevc "$out/"
