#include "recordings/ByteFile.h"

#include "core/Exception.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmo::recordings {

ByteFile openBytes(const std::string& path)
{
    // Not blocking: the opening of a pipe would wait for somebody to write into it.
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        VELMO_THROW(path + ": cannot be read: " + std::strerror(errno));
    struct stat status = {};
    const bool regular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    ByteFile file(regular ? fdopen(descriptor, "rb") : nullptr);
    if (!file) {
        close(descriptor);
        VELMO_THROW(path + ": is no file");
    }
    return file;
}

std::ifstream openStream(const std::string& path)
{
    const ByteFile asked = openBytes(path);
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        VELMO_THROW(path + ": cannot be read");
    return stream;
}

std::uint64_t sizeOf(std::FILE* file)
{
    if (fseeko(file, 0, SEEK_END) != 0)
        return 0;
    const off_t size = ftello(file);
    std::rewind(file);
    return size < 0 ? 0 : static_cast<std::uint64_t>(size);
}

void readBytes(std::FILE* file, const std::string& name, void* bytes, std::size_t count)
{
    if (std::fread(bytes, 1, count, file) != count)
        VELMO_THROW(name + ": cut off");
}

} // namespace velmo::recordings
