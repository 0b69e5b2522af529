// The two kinds of PxM header: a few numbers after P2, P3, P5 and P6, lines of names and values after P7.

#include "core/codecs/PxMHeader.h"

#include <string>

namespace velmo::exp {
namespace {

constexpr std::uint32_t maxSide = 0x7fffffff; // matrices count rows and columns in int
constexpr std::uint32_t maxChannels = 16;
constexpr std::uint32_t maxMaxValue = 65535;

int takeByte(ByteCursor& bytes)
{
    return *bytes.take(1);
}

/// The next byte that is no comment. A comment goes through the end of its line and leaves nothing behind,
/// so it may stand in the middle of a number.
int takeUncommented(ByteCursor& bytes)
{
    int byte = takeByte(bytes);
    while (byte == '#') {
        while (byte != '\n' && byte != '\r')
            byte = takeByte(bytes);
        byte = takeByte(bytes);
    }
    return byte;
}

/// A number and the one white space that ends it, of a header without names.
std::uint32_t takeNumber(ByteCursor& bytes, std::uint32_t limit)
{
    int byte = takeUncommented(bytes);
    while (isPxMSpace(byte))
        byte = takeUncommented(bytes);
    std::uint32_t number = 0;
    if (!isPxMDigit(byte))
        VELMO_THROW("Number expected in the image header!");
    for (; isPxMDigit(byte); byte = takeUncommented(bytes))
        number = appendPxMDigit(number, byte, limit);
    if (!isPxMSpace(byte))
        VELMO_THROW("White space expected behind a number in the image header!");
    return number;
}

/// How the samples of a raster are written.
enum class Samples
{
    Bytes,
    Text
};

/// What a pixel is made of.
enum class Pixel
{
    Grey,
    Colour
};

PxMHeader readNumbers(ByteCursor& bytes, Samples samples, Pixel pixel)
{
    if (!isPxMSpace(takeUncommented(bytes)))
        VELMO_THROW("White space expected behind the image's magic number!");
    PxMHeader header;
    header.bText = samples == Samples::Text;
    header.u32Channels = pixel == Pixel::Colour ? 3 : 1;
    header.u32Width = takeNumber(bytes, maxSide);
    header.u32Height = takeNumber(bytes, maxSide);
    header.u32MaxValue = takeNumber(bytes, maxMaxValue);
    return header;
}

std::string takeLine(ByteCursor& bytes)
{
    std::string line;
    for (int byte = takeByte(bytes); byte != '\n'; byte = takeByte(bytes))
        line.push_back(static_cast<char>(byte));
    return line;
}

/// Takes the first token off the line.
std::string takeToken(std::string& line)
{
    std::size_t begin = 0;
    while (begin < line.size() && isPxMSpace(line[begin]))
        ++begin;
    std::size_t end = begin;
    while (end < line.size() && !isPxMSpace(line[end]))
        ++end;
    std::string token = line.substr(begin, end - begin);
    line.erase(0, end);
    return token;
}

/// One of the numbers that a header of names holds exactly once.
struct NamedNumber
{
    const char* name;
    std::uint32_t limit;
    std::uint32_t* value;
    bool bSet = false;

    void set(std::string rest)
    {
        const std::string digits = takeToken(rest);
        if (bSet || digits.empty() || !takeToken(rest).empty())
            VELMO_THROW("Expected one number after " + std::string(name) + ", once in the image header!");
        for (const char digit : digits)
            *value = appendPxMDigit(*value, digit, limit);
        bSet = true;
    }
};

PxMHeader readNames(ByteCursor& bytes)
{
    // Nothing else on the line: thumbnails of another format begin with P7 and a version.
    if (takeByte(bytes) != '\n')
        VELMO_THROW("Line end expected behind P7!");
    PxMHeader header;
    header.u32Channels = 0;
    NamedNumber numbers[] = {{"WIDTH", maxSide, &header.u32Width},
                             {"HEIGHT", maxSide, &header.u32Height},
                             {"DEPTH", maxChannels, &header.u32Channels},
                             {"MAXVAL", maxMaxValue, &header.u32MaxValue}};
    for (;;) {
        std::string line = takeLine(bytes);
        if (!line.empty() && line[0] == '#')
            continue;
        const std::string name = takeToken(line);
        if (name == "ENDHDR")
            break;
        bool known = name.empty() || name == "TUPLTYPE"; // how the samples are meant is the caller's affair
        for (NamedNumber& number : numbers)
            if (name == number.name) {
                number.set(line);
                known = true;
            }
        if (!known)
            VELMO_THROW("Unknown line in the image header!");
    }
    for (const NamedNumber& number : numbers)
        if (!number.bSet)
            VELMO_THROW(std::string(number.name) + " is missing in the image header!");
    return header;
}

} // namespace

std::uint32_t appendPxMDigit(std::uint32_t number, int digit, std::uint32_t limit)
{
    if (!isPxMDigit(digit))
        VELMO_THROW("Decimal number expected in the image!");
    const std::uint64_t longer = std::uint64_t{10} * number + static_cast<std::uint64_t>(digit - '0');
    if (longer > limit)
        VELMO_THROW("A number of the image is above its limit of " + std::to_string(limit) + "!");
    return static_cast<std::uint32_t>(longer);
}

PxMHeader readPxMHeader(ByteCursor& bytes)
{
    const int magic = takeByte(bytes) == 'P' ? takeByte(bytes) : 0;
    PxMHeader header;
    switch (magic) {
    case '2':
        header = readNumbers(bytes, Samples::Text, Pixel::Grey);
        break;
    case '3':
        header = readNumbers(bytes, Samples::Text, Pixel::Colour);
        break;
    case '5':
        header = readNumbers(bytes, Samples::Bytes, Pixel::Grey);
        break;
    case '6':
        header = readNumbers(bytes, Samples::Bytes, Pixel::Colour);
        break;
    case '7':
        header = readNames(bytes);
        break;
    default:
        VELMO_THROW("Not a PxM image!");
    }
    if (header.u32MaxValue == 0 || header.u32Channels == 0)
        VELMO_THROW("MAXVAL and DEPTH of an image are at least 1!");
    return header;
}

} // namespace velmo::exp
