// Tests of verbs that write files.

#ifndef TESTS_H265TOOL_COMMAND_TEST_H
#define TESTS_H265TOOL_COMMAND_TEST_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "run_tool.h"

namespace h265tool {

// A directory of its own, which shows what was left behind.
class CommandTest : public testing::Test {
 protected:
    CommandTest();
    ~CommandTest() override;

    std::string Path(const std::string &name) const { return directory_ + "/" + name; }

    // Both return the path.
    std::string Written(const std::string &name, const std::string &text) const;
    std::string Written(const std::string &name, const test::Bytes &bytes) const;

    std::vector<std::string> Files() const;

 private:
    std::string directory_;
};

}  // namespace h265tool

#endif
