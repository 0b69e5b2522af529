#pragma once

#include "fuzz/Fuzz.h"

#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// A file in memory, by a name that can be opened; filled anew for every input.
class MemoryFile
{
public:
    MemoryFile()
        : m_s32Handle(memfd_create("fuzz", 0)), m_strPath("/proc/self/fd/" + std::to_string(m_s32Handle))
    {}
    ~MemoryFile() { close(m_s32Handle); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const std::string& filled(const std::uint8_t* data, std::size_t size)
    {
        require(ftruncate(m_s32Handle, 0) == 0 &&
                pwrite(m_s32Handle, data, size, 0) == static_cast<ssize_t>(size));
        return m_strPath;
    }

private:
    int m_s32Handle;
    std::string m_strPath;
};
