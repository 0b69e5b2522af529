#include "recordings/PaletteFormats.h"

#include "recordings/FileList.h"

#include "core/Exception.h"
#include "core/memory/ByteCursor.h"
#include "core/memory/MemoryAcsii.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <sstream>
#include <vector>

namespace velmo::recordings {
namespace {

constexpr std::size_t nColours = 256;
constexpr std::size_t nTableBytes = 3 * nColours;
constexpr std::uint64_t nLargestFile = 1 << 20; ///< a palette of 65,536 points is a text of less

std::string readAll(std::FILE* file, const std::string& name)
{
    const std::uint64_t size = sizeOf(file);
    if (size > nLargestFile)
        VELMO_THROW(name + ": too large for a palette");
    std::string bytes(size, ' ');
    readBytes(file, name, bytes.data(), bytes.size());
    return bytes;
}

/// The lines of a text with their places in it, however they end.
class Lines
{
public:
    Lines(std::string path, const std::string& text) : m_strPath(std::move(path)), m_oText(text) {}

    bool next(std::string& line)
    {
        ++m_nLine;
        if (!std::getline(m_oText, line))
            return false;
        while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back())) != 0)
            line.pop_back();
        return true;
    }

    [[noreturn]] void refuse(const std::string& why) const
    {
        VELMO_THROW(m_strPath + ": line " + std::to_string(m_nLine) + ": " + why);
    }

    /// The first line has to be this one.
    void require(const std::string& wanted)
    {
        std::string line;
        if (!next(line) || line != wanted)
            refuse("'" + wanted + "' expected");
    }

    std::size_t number() const { return m_nLine; }

private:
    std::string m_strPath;
    std::istringstream m_oText;
    std::size_t m_nLine = 0;
};

/// Adds the red, green and blue that a line begins with. What follows them is the name of the colour.
void addPoint(Palette& palette, const std::string& line, const Lines& lines)
{
    std::istringstream words(line);
    for (const char* const channel : {"red", "green", "blue"}) {
        std::string word;
        words >> word;
        unsigned char value = 0;
        if (!exp::MemoryAcsii::parse(word, value))
            lines.refuse(std::string(channel) + ": '" + word + "' is not a whole number from 0 to 255");
        palette.push_back(value);
    }
}

Palette readCsv(Lines lines)
{
    Palette palette;
    for (std::string line; lines.next(line);) {
        const bool heading = lines.number() == 1 && line.find_first_of("0123456789") == std::string::npos;
        if (line.empty() || heading)
            continue;
        std::replace_if(
            line.begin(), line.end(), [](char letter) { return letter == ',' || letter == ';'; }, ' ');
        addPoint(palette, line, lines);
    }
    return palette;
}

Palette readJasc(Lines lines)
{
    lines.require("JASC-PAL");
    lines.require("0100");
    std::string line;
    int count = 0;
    if (!lines.next(line) || !exp::MemoryAcsii::parse(line, count) || count < 1 || count > 65536)
        lines.refuse("number of colours: '" + line + "' is not a whole number from 1 to 65536");
    Palette palette;
    for (int point = 0; point < count; ++point) {
        if (!lines.next(line))
            lines.refuse(std::to_string(count) + " colours expected, there are " + std::to_string(point));
        addPoint(palette, line, lines);
    }
    return palette;
}

Palette readGimp(Lines lines)
{
    lines.require("GIMP Palette");
    Palette palette;
    for (std::string line; lines.next(line);)
        if (!line.empty() && line[0] != '#' && line.rfind("Name:", 0) != 0 && line.rfind("Columns:", 0) != 0)
            addPoint(palette, line, lines);
    return palette;
}

Palette readAdobe(const std::string& path, exp::ByteCursor bytes)
{
    if (bytes.left() != nTableBytes && bytes.left() != nTableBytes + 4)
        VELMO_THROW(path + ": a colour table has 768 or 772 bytes, this has " + std::to_string(bytes.left()));
    const std::uint8_t* const colours = bytes.take(nTableBytes);
    std::size_t count = nColours;
    if (bytes.left() > 0) { // how many of them count, high byte first; and which one is transparent
        const std::uint8_t* const number = bytes.take(2);
        count = std::size_t{number[0]} << 8 | number[1];
    }
    if (count < 1 || count > nColours)
        VELMO_THROW(path + ": a colour table has 1 to 256 colours, this says " + std::to_string(count));
    return {colours, colours + 3 * count};
}

Palette readPlanes(const std::string& path, exp::ByteCursor bytes)
{
    if (bytes.left() != nTableBytes)
        VELMO_THROW(path + ": a lookup table has 768 bytes, this has " + std::to_string(bytes.left()));
    const std::uint8_t* const reds = bytes.take(nColours);
    const std::uint8_t* const greens = bytes.take(nColours);
    const std::uint8_t* const blues = bytes.take(nColours);
    Palette palette;
    for (std::size_t point = 0; point < nColours; ++point)
        palette.insert(palette.end(), {reds[point], greens[point], blues[point]});
    return palette;
}

Palette read(std::FILE* file, const std::string& path)
{
    const std::string ending = endingOf(path);
    const std::string bytes = readAll(file, path);
    const exp::ByteCursor cursor(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    if (ending == ".csv")
        return readCsv({path, bytes});
    if (ending == ".pal")
        return readJasc({path, bytes});
    if (ending == ".gpl")
        return readGimp({path, bytes});
    if (ending == ".act")
        return readAdobe(path, cursor);
    if (ending == ".lut")
        return readPlanes(path, cursor);
    VELMO_THROW(path + ": palettes come from .csv, .pal, .gpl, .act and .lut files");
}

} // namespace

Palette importPalette(const std::string& path)
{
    return importPalette(openBytes(path), path);
}

Palette importPalette(ByteFile file, const std::string& path)
{
    Palette palette = read(file.get(), path);
    if (palette.empty())
        VELMO_THROW(path + ": there is no colour in it");
    return palette;
}

} // namespace velmo::recordings
