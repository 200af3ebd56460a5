#include "run_tool.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
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

namespace {

// The command with TOOL, and with standard error in a file.
std::string Script(const std::string &command, const std::string &errors) {
    return std::string("TOOL() { ") + H265TOOL_COMMAND + " \"$@\"; }; { " + command + "; } 2>'" + errors +
           "'";
}

void SetEnd(int status, const std::string &errors, Outcome *outcome) {
    outcome->status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    const test::Bytes err = FileBytes(errors);
    outcome->err.assign(err.begin(), err.end());
}

}  // namespace

Outcome Shell(const std::string &command) {
    const TemporaryFile errors;
    Outcome outcome{-1, {}, {}};
    FILE *const pipe = popen(Script(command, errors.path()).c_str(), "r");
    if (pipe == nullptr)
        return outcome;
    char buffer[4096];
    for (size_t count = 0; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        outcome.out.append(buffer, count);
    SetEnd(pclose(pipe), errors.path(), &outcome);
    return outcome;
}

Outcome ShellOnTerminal(const std::string &command) {
    const TemporaryFile errors;
    const std::string script = "export TERM=xterm; unset NO_COLOR; " + Script(command, errors.path());
    Outcome outcome{-1, {}, {}};
    struct termios settings {};
    cfmakeraw(&settings);  // what is written arrives as it is
    cfsetspeed(&settings, B38400);
    int terminal = -1;
    const pid_t shell = forkpty(&terminal, nullptr, &settings, nullptr);
    if (shell == 0) {
        execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
        _exit(127);
    }
    if (shell < 0)
        return outcome;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(terminal, buffer, sizeof buffer)) > 0;)  // until nobody has it open
        outcome.out.append(buffer, static_cast<size_t>(count));
    close(terminal);
    int status = 0;
    waitpid(shell, &status, 0);
    SetEnd(status, errors.path(), &outcome);
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
