#include "text_file.h"

#include <system_error>

#include "file_walk.h"
#include "input.h"
#include "usage_error.h"

namespace h265tool {

std::string FileText(const std::string &path) {
    try {
        std::string text;
        Input file(path);
        for (auto chunk = file.Read(); !chunk.empty(); chunk = file.Read())
            text.append(chunk.begin(), chunk.end());
        return text;
    } catch (const std::system_error &error) {
        throw UsageError(FileName(path), error.code().message());
    }
}

}  // namespace h265tool
