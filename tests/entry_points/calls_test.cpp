#include "entry_points/call.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace test {
namespace {

TEST(EntryPointCalls, AreThereForEveryExportedFunction) {
    std::set<std::string> exported;
    for (const auto &list : std::filesystem::directory_iterator(SYMBOLS_DIR)) {
        std::ifstream symbols(list.path());
        for (std::string symbol; std::getline(symbols, symbol);)
            exported.insert(symbol);
    }
    exported.erase("g_hH265LibDbg");  // a variable

    std::set<std::string> called;
    for (const EntryPoint &entry_point : EntryPoints())
        called.insert(entry_point.function);
    EXPECT_EQ(called, exported);
}

}  // namespace
}  // namespace test
