#include "recordings/LensFile.h"

namespace velmo::recordings {

void writeLensMap(OutputFile file, const cv::Mat& map)
{
    file.write("P7\nWIDTH " + std::to_string(map.cols) + "\nHEIGHT " + std::to_string(map.rows) +
               "\nDEPTH 6\nMAXVAL 65535\nTUPLTYPE DISTORTION\nENDHDR\n");
    constexpr bool highByteFirst = true;
    file.write(map, highByteFirst);
    file.finish();
}

} // namespace velmo::recordings
