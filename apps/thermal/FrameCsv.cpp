#include "apps/thermal/FrameCsv.h"

#include "apps/thermal/Table.h"

#include <cstdio>
#include <utility>

namespace thermal {

using namespace velmo::camera;

FrameCsv::FrameCsv(velmo::recordings::Outputs& outputs, std::string folder, Thermometer thermometer)
    : m_oOutputs(outputs), m_strFolder(std::move(folder)), m_oThermometer(std::move(thermometer)),
      m_vecTexts(Scale::s32Values)
{
    m_oOutputs.folder(m_strFolder);
}

const std::string& FrameCsv::textOf(unsigned short value)
{
    std::string& text = m_vecTexts[value];
    if (text.empty())
        text = forCsv(m_oThermometer.rounded(m_oThermometer.read(value)));
    return text;
}

void FrameCsv::write(const Frame& frame)
{
    char name[32];
    std::snprintf(name, sizeof name, "/frame_%04zu.csv", m_nNext++);
    velmo::recordings::OutputFile file = m_oOutputs.file(m_strFolder + name);
    std::string line;
    for (int r = 0; r < frame.rows; ++r) {
        line.clear();
        for (int c = 0; c < frame.cols; ++c)
            line += textOf(frame[r][c]) + (c + 1 < frame.cols ? "," : "\n");
        file.write(line);
    }
    file.finish();
}

} // namespace thermal
