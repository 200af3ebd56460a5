#include "edit/request.h"

#include <array>
#include <charconv>
#include <limits>
#include <string>

#include "edit/colour_names.h"
#include "rate.h"
#include "text.h"
#include "usage_error.h"

namespace h265tool {
namespace {

constexpr uint32_t kMaxPictureSide = 65535;  // no level allows as much, and all products fit

// The value of an option, numbers with a separator between them; `form` says what it looks like.
template <size_t count>
std::array<uint32_t, count> Numbers(const std::string &option, const std::string &text, char separator,
                                    const char *form) {
    std::array<uint32_t, count> numbers{};
    const char *at = text.data();
    const char *const end = at + text.size();
    for (size_t i = 0; i < count; i++) {
        const auto [next, error] = std::from_chars(at, end, numbers[i]);
        const bool is_last = i + 1 == count;
        if (error != std::errc{} || (is_last ? next != end : next == end || *next != separator))
            throw UsageError(option, Text("\"", text, "\" is not ", form));
        at = is_last ? end : next + 1;
    }
    return numbers;
}

PictureSize ReadSize(const std::string &text) {
    const auto [width, height] = Numbers<2>("--size", text, 'x', "WxH");
    if (width == 0 || height == 0 || width > kMaxPictureSide || height > kMaxPictureSide)
        throw UsageError("--size", Text("sides of pictures are 1 to ", kMaxPictureSide));
    return {width, height};
}

CropWindow ReadCrop(const std::string &text) {
    const auto [left, right, top, bottom] = Numbers<4>("--crop", text, ',', "L,R,T,B");
    return {left, right, top, bottom};
}

AspectRatio ReadAspectRatio(const std::string &text) {
    const auto [width, height] = Numbers<2>("--sar", text, ':', "W:H");
    const std::optional<AspectRatio> aspect_ratio = MakeAspectRatio(width, height);
    if (!aspect_ratio.has_value())
        throw UsageError("--sar",
                         Text("the parts of a ratio are 1 to ", std::numeric_limits<uint16_t>::max()));
    return *aspect_ratio;
}

unsigned char CodePoint(const std::string &name, const char *what,
                        std::optional<unsigned char> (*parse)(std::string_view)) {
    const std::optional<unsigned char> value = parse(name);
    if (!value.has_value())
        throw UsageError("--colour", Text("\"", name, "\" names no ", what));
    return *value;
}

ColourDescription ReadColour(const std::string &text) {
    const size_t first = text.find('/');
    const size_t second = first == std::string::npos ? first : text.find('/', first + 1);
    if (second == std::string::npos || text.find('/', second + 1) != std::string::npos)
        throw UsageError("--colour", Text("\"", text, "\" is not PRIMARIES/TRANSFER/MATRIX"));
    return {CodePoint(text.substr(0, first), "colour primaries", ParseColourPrimaries),
            CodePoint(text.substr(first + 1, second - first - 1), "transfer characteristics",
                      ParseTransferCharacteristics),
            CodePoint(text.substr(second + 1), "matrix coefficients", ParseMatrixCoeffs)};
}

TimingInfo ReadTiming(const std::string &text) {
    const auto [units, scale] = Numbers<2>("--timing", text, '/', "UNITS/SCALE");
    if (units == 0 || scale == 0)
        throw UsageError("--timing", "neither part may be 0");
    return {units, scale};
}

TimingInfo TimingOf(const Rate &rate) {
    return {static_cast<uint32_t>(rate.denominator), static_cast<uint32_t>(rate.numerator)};
}

}  // namespace

bool EditRequest::ChangesVui() const {
    return field_seq || aspect_ratio.has_value() || colour.has_value() || full_range.has_value() ||
           timing.has_value() || hrd.has_value();
}

bool EditRequest::ChangesSps() const {
    return ChangesVui() || interlaced || size.has_value() || crop.has_value();
}

bool EditRequest::ConcernsSei() const {
    return field_seq || hrd.has_value() || pic_struct.has_value();
}

EditRequest MakeEditRequest(const EditOptions &options) {
    EditRequest request;
    request.interlaced = options.interlaced;
    request.field_seq = options.field_seq;
    request.pic_struct = options.pic_struct;
    if (options.size.has_value())
        request.size = ReadSize(*options.size);
    if (options.crop.has_value())
        request.crop = ReadCrop(*options.crop);
    if (options.sar.has_value())
        request.aspect_ratio = ReadAspectRatio(*options.sar);
    if (options.colour.has_value())
        request.colour = ReadColour(*options.colour);
    if (options.range.has_value())
        request.full_range = *options.range == "full";
    if (options.timing.has_value())
        request.timing = ReadTiming(*options.timing);
    if (options.fps.has_value())
        request.timing = TimingOf(RateOption("--fps", *options.fps));
    if (options.hrd.has_value())
        request.hrd = ReadHrdFields(*options.hrd);
    return request;
}

}  // namespace h265tool
