#include "edit/colour_names.h"

#include <charconv>
#include <span>
#include <string>

namespace h265tool {
namespace {

// A name in lower case, without anything but letters and digits.
struct Name {
    std::string_view text;
    unsigned char value;
};

constexpr Name kColourPrimaries[] = {
    {"bt709", 1},        {"unknown", 2},     {"unspecified", 2},   {"bt470m", 4},       {"bt470bg", 5},
    {"bt601625", 5},     {"smpte170m", 6},   {"bt601", 6},         {"bt601525", 6},     {"smpte240m", 7},
    {"smptest240", 7},   {"film", 8},        {"bt2020", 9},        {"bt2100", 9},       {"smpte428", 10},
    {"smpte4281", 10},   {"smptest428", 10}, {"smptest4281", 10},  {"ciexyz", 10},      {"smpte431", 11},
    {"smpterp4312", 11}, {"dcip3", 11},      {"smpte432", 12},     {"smpteeg4321", 12}, {"displayp3", 12},
    {"p3d65", 12},       {"ebu3213", 22},    {"ebutech3213e", 22}, {"jedecp22", 22},
};

constexpr Name kTransferCharacteristics[] = {
    {"bt709", 1},       {"unknown", 2},      {"unspecified", 2}, {"gamma22", 4},      {"bt470m", 4},
    {"gamma28", 5},     {"bt470bg", 5},      {"smpte170m", 6},   {"bt601", 6},        {"smpte240m", 7},
    {"smptest240", 7},  {"linear", 8},       {"log", 9},         {"log100", 9},       {"logsqrt", 10},
    {"log316", 10},     {"iec6196624", 11},  {"xvycc", 11},      {"bt1361", 12},      {"bt1361e", 12},
    {"iec6196621", 13}, {"srgb", 13},        {"sycc", 13},       {"bt202010", 14},    {"bt202010bit", 14},
    {"bt202012", 15},   {"bt202012bit", 15}, {"smpte2084", 16},  {"smptest2084", 16}, {"pq", 16},
    {"bt2100pq", 16},   {"smpte428", 17},    {"smpte4281", 17},  {"smptest428", 17},  {"smptest4281", 17},
    {"aribstdb67", 18}, {"hlg", 18},         {"bt2100hlg", 18},
};

constexpr Name kMatrixCoeffs[] = {
    {"gbr", 0},
    {"rgb", 0},
    {"identity", 0},
    {"bt709", 1},
    {"unknown", 2},
    {"unspecified", 2},
    {"fcc", 4},
    {"bt470bg", 5},
    {"bt601625", 5},
    {"smpte170m", 6},
    {"bt601", 6},
    {"bt601525", 6},
    {"smpte240m", 7},
    {"smptest240", 7},
    {"ycgco", 8},
    {"ycocg", 8},
    {"bt2020nc", 9},
    {"bt2020ncl", 9},
    {"bt2020c", 10},
    {"bt2020cl", 10},
    {"smpte2085", 11},
    {"smptest2085", 11},
    {"chromaderivednc", 12},
    {"chromaderivedncl", 12},
    {"chromaderivedc", 13},
    {"chromaderivedcl", 13},
    {"ictcp", 14},
};

std::string Normalized(std::string_view name) {
    std::string normalized;
    for (const char c : name) {
        if (c >= 'A' && c <= 'Z')
            normalized += static_cast<char>(c - 'A' + 'a');
        else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
            normalized += c;
    }
    return normalized;
}

std::optional<unsigned char> Parse(std::string_view name, std::span<const Name> names) {
    const char *const name_end = name.data() + name.size();
    unsigned char value = 0;
    const auto [end, error] = std::from_chars(name.data(), name_end, value);
    if (error == std::errc{} && end == name_end)
        return value;
    const std::string normalized = Normalized(name);
    for (const Name &known : names) {
        if (known.text == normalized)
            return known.value;
    }
    return std::nullopt;
}

}  // namespace

std::optional<unsigned char> ParseColourPrimaries(std::string_view name) {
    return Parse(name, kColourPrimaries);
}

std::optional<unsigned char> ParseTransferCharacteristics(std::string_view name) {
    return Parse(name, kTransferCharacteristics);
}

std::optional<unsigned char> ParseMatrixCoeffs(std::string_view name) {
    return Parse(name, kMatrixCoeffs);
}

}  // namespace h265tool
