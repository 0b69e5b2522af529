#include "bench/Bench.h"
#include "vision/imgproc/ColorPaletteManager.h"

#include <tinyxml.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

using Manager = velmo::vision::ColorPaletteManager;

namespace {

/// A file of many palettes, which is removed again, and its text.
class PaletteFile
{
public:
    PaletteFile(int palettes, int colors)
        : m_oPath(std::filesystem::temp_directory_path() / ("palettes-" + std::to_string(getpid()) + ".xml"))
    {
        m_strText = "<?xml version=\"1.0\"?>\n<group name=\"palettes\">\n";
        for (int n = 0; n < palettes; ++n) {
            m_strText += "  <item name=\"palette" + std::to_string(n) + "\" type=\"uint8[]\">";
            for (int color = 0; color < colors; ++color) {
                char point[16];
                std::snprintf(point, sizeof point, "#%06X ", (n * 7919 + color * 65793) & 0xffffff);
                m_strText += point;
            }
            m_strText += "</item>\n";
        }
        m_strText += "</group>\n";
        std::ofstream(m_oPath, std::ios::binary) << m_strText;
    }
    ~PaletteFile() { std::filesystem::remove(m_oPath); }
    PaletteFile(const PaletteFile&) = delete;
    PaletteFile& operator=(const PaletteFile&) = delete;

    void load() const { Manager::loadFile(m_oPath.string()); }
    void parse() const { TiXmlDocument().Parse(m_strText.c_str()); }
    std::size_t size() const { return m_strText.size(); }

private:
    std::filesystem::path m_oPath;
    std::string m_strText;
};

Job loading(cv::Size size)
{
    const int palettes = size.height, colors = size.width;
    const auto file = std::make_shared<PaletteFile>(palettes, colors);
    file->load();
    const auto last = Manager::getPaletteColors("palette" + std::to_string(palettes - 1));
    Job job(2 * file->size(), file->size(), "byte");
    job.check(last.size() == 3 * static_cast<std::size_t>(colors));
    job.ours([file] { file->load(); });
    job.peer("parser alone", [file] { file->parse(); });
    job.atMost(3, "parser alone");
    return job;
}

const Registration files("palette file", loading, {{256, 1000}});

} // namespace
