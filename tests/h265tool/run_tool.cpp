#include "run_tool.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace h265tool {

std::vector<std::string> Outcome::Lines() const {
    std::vector<std::string> lines;
    std::istringstream stream(out);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

Outcome Shell(const std::string &command) {
    const TemporaryFile errors;
    const std::string whole = std::string("TOOL() { ") + H265TOOL_COMMAND + " \"$@\"; }; { " + command +
                              "; } 2>'" + errors.path() + "'";
    Outcome outcome{-1, {}, {}};
    FILE *const pipe = popen(whole.c_str(), "r");
    if (pipe == nullptr)
        return outcome;
    char buffer[4096];
    for (size_t count = 0; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        outcome.out.append(buffer, count);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    const test::Bytes err = FileBytes(errors.path());
    outcome.err.assign(err.begin(), err.end());
    return outcome;
}

std::string Sample(const std::string &name) {
    return std::string(SAMPLES_DIR) + "/" + name;
}

test::Bytes FileBytes(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return test::Bytes(std::istreambuf_iterator<char>(file), {});
}

TemporaryFile::TemporaryFile(const test::Bytes &bytes) : path_(testing::TempDir() + "h265tool-XXXXXX") {
    close(mkstemp(path_.data()));
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

TemporaryFile::~TemporaryFile() {
    std::remove(path_.c_str());
}

}  // namespace h265tool
