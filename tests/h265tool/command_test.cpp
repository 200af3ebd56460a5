#include "command_test.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace h265tool {

CommandTest::CommandTest() {
    std::string name = testing::TempDir() + "h265tool-command-XXXXXX";
    directory_ = mkdtemp(name.data());
}

CommandTest::~CommandTest() {
    std::filesystem::remove_all(directory_);
}

std::string CommandTest::Written(const std::string &name, const std::string &text) const {
    std::ofstream(Path(name), std::ios::binary) << text;
    return Path(name);
}

std::string CommandTest::Written(const std::string &name, const test::Bytes &bytes) const {
    return Written(name, std::string(bytes.begin(), bytes.end()));
}

std::vector<std::string> CommandTest::Files() const {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(directory_))
        names.push_back(entry.path().filename().string());
    return names;
}

}  // namespace h265tool
