#include "json/difference.h"

#include <algorithm>

#include "text.h"

namespace h265tool {
namespace {

constexpr char kNothing[] = "nothing";

// NOLINTBEGIN(misc-no-recursion): as deep as the documents
std::optional<JsonDifference> InValues(const std::string &path, const Json &expected, const Json &actual);

std::optional<JsonDifference> InObjects(const std::string &path, const Json &expected, const Json &actual) {
    const auto path_to = [&path](const std::string &name) {
        return path.empty() ? name : Text(path, ".", name);
    };
    for (const auto &[name, value] : expected.items()) {
        if (!actual.contains(name))
            return JsonDifference{path_to(name), value.dump(), kNothing};
        if (auto difference = InValues(path_to(name), value, actual.at(name)))
            return difference;
    }
    for (const auto &[name, value] : actual.items()) {
        if (!expected.contains(name))
            return JsonDifference{path_to(name), kNothing, value.dump()};
    }
    return std::nullopt;
}

std::optional<JsonDifference> InArrays(const std::string &path, const Json &expected, const Json &actual) {
    for (size_t i = 0; i < std::max(expected.size(), actual.size()); i++) {
        const std::string path_here = Text(path, "[", i, "]");
        if (i >= actual.size())
            return JsonDifference{path_here, expected[i].dump(), kNothing};
        if (i >= expected.size())
            return JsonDifference{path_here, kNothing, actual[i].dump()};
        if (auto difference = InValues(path_here, expected[i], actual[i]))
            return difference;
    }
    return std::nullopt;
}

std::optional<JsonDifference> InValues(const std::string &path, const Json &expected, const Json &actual) {
    if (expected.is_object() && actual.is_object())
        return InObjects(path, expected, actual);
    if (expected.is_array() && actual.is_array())
        return InArrays(path, expected, actual);
    if (expected == actual)
        return std::nullopt;
    return JsonDifference{path, expected.dump(), actual.dump()};
}
// NOLINTEND(misc-no-recursion)

}  // namespace

std::optional<JsonDifference> FirstDifference(const Json &expected, const Json &actual) {
    return InValues({}, expected, actual);
}

}  // namespace h265tool
