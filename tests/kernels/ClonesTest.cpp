// Which of its clones a loop is given by the processor.

#include "core/Clones.h"

#include "tests/Support.h"

#if VELMO_HAS_CLONES

#include <dlfcn.h>

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

/// As the C library's loader sees the processor, which chooses libraries by the same levels.
std::string bestLevel()
{
    const std::string loader = "/lib64/ld-linux-x86-64.so.2 --help | grep -q 'x86-64-v";
    for (const std::string level : {"4", "3", "2"})
        if (std::system((loader + level + " (supported'").c_str()) == 0)
            return "arch_x86_64_v" + level;
    return "default";
}

TEST(Clones, AreBoundToTheBestLevelThatTheProcessorHas)
{
    const std::string symbol = symbolAt(addressOfLoop());
    EXPECT_THAT(symbol, testing::AllOf(HasSubstr("addressOfLoop"), testing::EndsWith("." + bestLevel())));
}

} // namespace

#endif
