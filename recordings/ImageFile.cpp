#include "recordings/ImageFile.h"

#include "recordings/ByteFile.h"
#include "recordings/Films.h"
#include "recordings/NpyFile.h"
#include "recordings/PgmFile.h"
#include "recordings/PngFile.h"
#include "recordings/TiffFile.h"

#include "core/Exception.h"

#include <array>

namespace velmo::recordings {
namespace {

/// What a file is, by how it begins.
enum class Kind
{
    Unknown,
    Netpbm,
    Png,
    Tiff,
    Npy,
    Film
};

Kind kindOf(std::FILE* file)
{
    std::array<char, 8> bytes = {};
    const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), file);
    std::rewind(file);
    const std::string begin(bytes.data(), count);
    const auto beginsWith = [&](const std::string& mark) { return begin.rfind(mark, 0) == 0; };
    if (beginsWith("\x89PNG"))
        return Kind::Png;
    if (beginsWith("\x93NUMPY"))
        return Kind::Npy;
    for (const char* const mark : {"II\x2a", "MM", "II\x2b"}) // "MM" goes on with a zero byte
        if (beginsWith(mark))
            return Kind::Tiff;
    for (const char* const mark : {"\x1a\x45\xdf\xa3", "RIFF", "nut/mult"}) // Matroska, AVI, NUT
        if (beginsWith(mark))
            return Kind::Film;
    return begin.size() > 1 && begin[0] == 'P' && begin[1] >= '2' && begin[1] <= '7' ? Kind::Netpbm
                                                                                     : Kind::Unknown;
}

} // namespace

std::unique_ptr<ImageFile> openImageFile(const std::string& path)
{
    ByteFile file = openBytes(path);
    switch (kindOf(file.get())) {
    case Kind::Netpbm:
        return openPgm(path);
    case Kind::Png:
        return openPng(std::move(file), path);
    case Kind::Tiff:
        return openTiff(std::move(file), path);
    case Kind::Npy:
        return openNpy(std::move(file), path);
    case Kind::Film:
        return films().open(std::move(file), path);
    case Kind::Unknown:
        break;
    }
    VELMO_THROW(path + ": not a PGM, PNG, TIFF or .npy file or a film in Matroska, AVI or NUT");
}

std::optional<std::size_t> countImages(const std::string& path)
{
    const Kind kind = kindOf(openBytes(path).get());
    // Folders of thousands of frames: their headers are not read twice.
    return kind == Kind::Netpbm || kind == Kind::Png ? 1 : openImageFile(path)->count();
}

} // namespace velmo::recordings
