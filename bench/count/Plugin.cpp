// What qemu-user loads to count the instructions that a program executes, built for the machine that qemu
// runs on. A program asks for the number so far by a system call that no system has, bench/Instructions.cpp
// says which.
//
// The names are those of version 1 of qemu's interface for plugins (qemu 7). Debian has no package of its
// header.

#include <cstddef>
#include <cstdint>
#include <unistd.h>

extern "C" {

struct qemu_plugin_tb;
using Identity = std::uint64_t;
using TranslatedBlock = void (*)(Identity, qemu_plugin_tb*);
using SystemCall = void (*)(Identity, unsigned processor, std::int64_t number, std::uint64_t first,
                            std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t,
                            std::uint64_t, std::uint64_t);

std::size_t qemu_plugin_tb_n_insns(const qemu_plugin_tb* block);
void qemu_plugin_register_vcpu_tb_trans_cb(Identity plugin, TranslatedBlock call);
void qemu_plugin_register_vcpu_tb_exec_inline(qemu_plugin_tb* block, int operation, void* value,
                                              std::uint64_t operand);
void qemu_plugin_register_vcpu_syscall_cb(Identity plugin, SystemCall call);

__attribute__((visibility("default"))) extern int qemu_plugin_version;
__attribute__((visibility("default"))) int qemu_plugin_install(Identity plugin, const void* about, int count,
                                                               char** arguments);

int qemu_plugin_version = 1;
}

namespace {

constexpr int addToValue = 0;
constexpr std::int64_t callForCount = 0x766d;

std::uint64_t executed = 0;

/// Every block adds what it has each time that it is entered.
void countBlock(Identity, qemu_plugin_tb* block)
{
    qemu_plugin_register_vcpu_tb_exec_inline(block, addToValue, &executed, qemu_plugin_tb_n_insns(block));
}

/// The number goes into the pipe that the program names: qemu and the program have their files in common.
void tellCount(Identity, unsigned, std::int64_t number, std::uint64_t pipe, std::uint64_t, std::uint64_t,
               std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t)
{
    // If it does not arrive, the program says so.
    if (number == callForCount && write(static_cast<int>(pipe), &executed, sizeof executed) < 0)
        return;
}

} // namespace

int qemu_plugin_install(Identity plugin, const void*, int, char**)
{
    qemu_plugin_register_vcpu_tb_trans_cb(plugin, countBlock);
    qemu_plugin_register_vcpu_syscall_cb(plugin, tellCount);
    return 0;
}
