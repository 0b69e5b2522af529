#pragma once

#include "camera/Frame.h"
#include "camera/temperature/Thermometer.h"
#include "recordings/Outputs.h"

#include <cstddef>
#include <string>
#include <vector>

namespace thermal {

/// A folder of whole frames as comma-separated values: what the thermometer reads, a line per row, "below"
/// and "above" where that is no number.
class FrameCsv
{
public:
    /// @throws Exception  that names the folder, if it cannot be written
    FrameCsv(velmo::recordings::Outputs& outputs, std::string folder, velmo::camera::Thermometer thermometer);

    /// The next frame: frame_0000.csv and so on.
    void write(const velmo::camera::Frame& frame);

private:
    const std::string& textOf(unsigned short value);

    velmo::recordings::Outputs& m_oOutputs;
    std::string m_strFolder;
    velmo::camera::Thermometer m_oThermometer;
    std::vector<std::string> m_vecTexts; ///< of the values so far: they come again and again
    std::size_t m_nNext = 0;
};

} // namespace thermal
