#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

namespace velmo::recordings {

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// An open file of bytes, closed with the object. What stands in memory is one too, by fmemopen.
using ByteFile = std::unique_ptr<std::FILE, CloseFile>;

/// Opens a file for reading. Folders, devices and pipes are refused, without waiting for a pipe's other end.
/// @throws Exception  that names the file
ByteFile openBytes(const std::string& path);

/// The same as a stream, for decoders that read one.
std::ifstream openStream(const std::string& path);

/// The number of bytes in the file; it is read from its beginning next.
std::uint64_t sizeOf(std::FILE* file);

/// Reads so many bytes.
/// @throws Exception  if there are fewer: "NAME: cut off"
void readBytes(std::FILE* file, const std::string& name, void* bytes, std::size_t count);

} // namespace velmo::recordings
