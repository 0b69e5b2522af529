#include "recordings/Films.h"
#include "recordings/Frames.h"
#include "recordings/PngFile.h"

namespace velmo::recordings {

Picture readPicture(const std::string& path)
{
    ByteFile file = openBytes(path);
    const int first = std::fgetc(file.get());
    std::rewind(file.get());
    return first == 0x89 ? readPngColours(std::move(file), path) : films().readColours(std::move(file), path);
}

} // namespace velmo::recordings
