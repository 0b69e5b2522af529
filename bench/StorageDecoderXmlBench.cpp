#include "core/codecs/StorageDecoderXml.h"

#include "bench/Bench.h"

#include <cstdio>
#include <memory>
#include <sstream>

#include <tinyxml.h>

using namespace velmo::exp;

namespace {

using Storage = DataStorage<std::string>;

constexpr int paletteCount = 1000;
constexpr int colourCount = 256;

std::string colourText(int palette, int colour)
{
    char text[16];
    std::snprintf(text, sizeof(text), "#%06X ",
                  static_cast<unsigned>(palette * 7919 + colour * 65793) & 0xFFFFFFu);
    return text;
}

std::string paletteFile()
{
    std::string text = "<?xml version=\"1.0\"?>\n<group name=\"palettes\">\n";
    for (int palette = 0; palette < paletteCount; ++palette) {
        text += "  <item name=\"palette" + std::to_string(palette) + "\" type=\"uint8[]\">";
        for (int colour = 0; colour < colourCount; ++colour)
            text += colourText(palette, colour);
        text += "</item>\n";
    }
    return text + "</group>\n";
}

Storage load(const std::string& file)
{
    std::istringstream in(file);
    return StorageDecoderXml::decode<Storage>(in).first;
}

bool isLoaded(const Storage& palettes)
{
    const auto first = palettes.get("palette0");
    // Colour 255 is 255 * 0x010101.
    return palettes.size() == paletteCount && first &&
           first->value<std::vector<unsigned char>>().size() == 3 * colourCount &&
           first->value<std::vector<unsigned char>>().back() == 255;
}

Job manyPalettes(cv::Size)
{
    const auto file = std::make_shared<const std::string>(paletteFile());
    Job job(file->size() + std::size_t{3} * paletteCount * colourCount, std::size_t{paletteCount}, "palette");
    job.check(isLoaded(load(*file)));
    job.ours([file] { load(*file); });
    // The XML parser alone, with its defaults: no check, no values, no tree of ours.
    job.peer("TiXmlDocument::Parse", [file] { TiXmlDocument().Parse(file->c_str()); });
    job.atMost(3, "TiXmlDocument::Parse");
    return job;
}

const Registration palettes("storage file", manyPalettes, {{paletteCount, colourCount}});

} // namespace
