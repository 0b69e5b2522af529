// Which of its clones a loop is given by the processor.

#include "core/Clones.h"

#include <gtest/gtest.h>

#if VELMO_HAS_CLONES

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// Where it stands in memory.
VELMO_CLONES std::uintptr_t addressOfLoop()
{
    std::uintptr_t here = 0;
    asm volatile("lea (%%rip), %0" : "=r"(here));
    return here;
}

/// The last symbol of this program at or before an address, "addressOfLoop.arch_x86_64_v3" or the like.
std::string symbolAt(std::uintptr_t address)
{
    Dl_info program{};
    dladdr(reinterpret_cast<void*>(&symbolAt), &program);
    const std::uintptr_t offset = address - reinterpret_cast<std::uintptr_t>(program.dli_fbase);
    const std::unique_ptr<FILE, int (*)(FILE*)> names(
        popen("nm --numeric-sort --defined-only /proc/$PPID/exe", "r"), pclose);
    std::string last;
    char name[4096];
    unsigned long long at = 0;
    while (std::fscanf(names.get(), "%llx %*s %4095s", &at, name) == 2 && at <= offset)
        last = name;
    return last;
}

std::string bestLevel()
{
    std::ifstream in("/proc/cpuinfo");
    std::string line;
    while (std::getline(in, line) && line.rfind("flags", 0) != 0) {
    }
    std::istringstream words(line);
    const std::vector<std::string> flags{std::istream_iterator<std::string>(words), {}};
    const auto has = [&flags](const char* names) {
        std::istringstream wanted(names);
        return std::all_of(std::istream_iterator<std::string>(wanted), {}, [&](const std::string& flag) {
            return std::find(flags.begin(), flags.end(), flag) != flags.end();
        });
    };
    if (!has("cx16 lahf_lm popcnt pni ssse3 sse4_1 sse4_2"))
        return "default";
    if (!has("avx avx2 bmi1 bmi2 f16c fma abm movbe"))
        return "arch_x86_64_v2";
    return has("avx512f avx512bw avx512cd avx512dq avx512vl") ? "arch_x86_64_v4" : "arch_x86_64_v3";
}

TEST(Clones, AreBoundToTheBestLevelThatTheProcessorHas)
{
    const std::string symbol = symbolAt(addressOfLoop());
    EXPECT_NE(symbol.find("addressOfLoop"), std::string::npos) << symbol;
    EXPECT_EQ(symbol.substr(symbol.find('.') + 1), bestLevel());
}

} // namespace

#endif
