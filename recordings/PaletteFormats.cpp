#include "recordings/PaletteFormats.h"

#include "apps/thermal/Error.h"
#include "camera/settings/Parse.h"
#include "recordings/PartialPath.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

namespace thermal {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t nColours = 256;
constexpr std::size_t nTableBytes = 3 * nColours;
constexpr std::uintmax_t nLargestFile = 1 << 20; ///< a palette of 65,536 points is a text of less

std::string readAll(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file || !fs::is_regular_file(path))
        throw UsageError(path + ": cannot be read");
    if (fs::file_size(path) > nLargestFile)
        throw UsageError(path + ": too large for a palette");
    return {std::istreambuf_iterator<char>(file), {}};
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
        throw UsageError(m_strPath + ": line " + std::to_string(m_nLine) + ": " + why);
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
        try {
            palette.push_back(static_cast<unsigned char>(parseInt(word, channel, 0, 255)));
        } catch (const UsageError& error) {
            lines.refuse(error.what());
        }
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
    lines.next(line);
    const int count = parseInt(line, "number of colours", 1, 65536);
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

Palette readAdobe(const std::string& path, const std::string& bytes)
{
    if (bytes.size() != nTableBytes && bytes.size() != nTableBytes + 4)
        throw UsageError(path + ": a colour table has 768 or 772 bytes, this has " +
                         std::to_string(bytes.size()));
    const std::vector<unsigned char> table(bytes.begin(), bytes.end());
    // Behind the colours: how many of them count, high byte first, and which one is transparent.
    const std::size_t count = table.size() == nTableBytes
                                  ? nColours
                                  : std::size_t{table[nTableBytes]} << 8 | table[nTableBytes + 1];
    if (count < 1 || count > nColours)
        throw UsageError(path + ": a colour table has 1 to 256 colours, this says " + std::to_string(count));
    return {table.begin(), table.begin() + static_cast<std::ptrdiff_t>(3 * count)};
}

Palette readPlanes(const std::string& path, const std::string& bytes)
{
    if (bytes.size() != nTableBytes)
        throw UsageError(path + ": a lookup table has 768 bytes, this has " + std::to_string(bytes.size()));
    Palette palette;
    for (std::size_t point = 0; point < nColours; ++point)
        for (std::size_t plane = 0; plane < 3; ++plane)
            palette.push_back(static_cast<unsigned char>(bytes[nColours * plane + point]));
    return palette;
}

Palette read(const std::string& path)
{
    std::string ending = fs::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    const std::string bytes = readAll(path);
    if (ending == ".csv")
        return readCsv({path, bytes});
    if (ending == ".pal")
        return readJasc({path, bytes});
    if (ending == ".gpl")
        return readGimp({path, bytes});
    if (ending == ".act")
        return readAdobe(path, bytes);
    if (ending == ".lut")
        return readPlanes(path, bytes);
    throw UsageError(path + ": palettes come from .csv, .pal, .gpl, .act and .lut files");
}

/// A name as an attribute of an XML file.
std::string attribute(const std::string& name)
{
    std::string text;
    for (const char letter : name)
        switch (letter) {
        case '&':
            text += "&amp;";
            break;
        case '<':
            text += "&lt;";
            break;
        case '>':
            text += "&gt;";
            break;
        case '"':
            text += "&quot;";
            break;
        default:
            text += letter;
        }
    return text;
}

void requireName(const std::string& name)
{
    const bool plain = std::none_of(name.begin(), name.end(), [](unsigned char letter) {
        return letter == '/' || std::iscntrl(letter) != 0;
    });
    if (name.empty() || !plain)
        throw UsageError("'" + name + "': the name of a palette is a text without '/' and line ends");
}

} // namespace

Palette importPalette(const std::string& path)
{
    Palette palette = read(path);
    if (palette.empty())
        throw UsageError(path + ": there is no colour in it");
    return palette;
}

void exportPalette(const std::string& path, const std::string& name, const Palette& palette)
{
    requireName(name);
    PartialPath partial(path);
    std::ofstream file(partial.path());
    file << "<group name=\"palettes\">\n    <item name=\"" << attribute(name) << "\" type=\"uint8[]\">";
    for (std::size_t point = 0; point < palette.size() / 3; ++point)
        file << (point % 12 == 0 ? "\n        " : " ") << colourText(palette, point);
    file << "\n    </item>\n</group>\n";
    file.close();
    if (!file || fs::is_directory(path))
        throw UsageError(path + ": cannot be written");
    partial.keep();
}

} // namespace thermal
