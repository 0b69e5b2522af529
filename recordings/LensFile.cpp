#include "recordings/LensFile.h"

#include "recordings/RawSink.h"

namespace velmo::recordings {

void writeLensMap(const std::string& path, const cv::Mat& map)
{
    RawSink sink(path);
    sink.write("P7\nWIDTH " + std::to_string(map.cols) + "\nHEIGHT " + std::to_string(map.rows) +
               "\nDEPTH 6\nMAXVAL 65535\nTUPLTYPE DISTORTION\nENDHDR\n");
    cv::Mat bytes(map.rows, map.cols * map.channels(), CV_8UC2);
    const cv::Mat samples = map.reshape(1);
    for (int r = 0; r < bytes.rows; ++r)
        for (int c = 0; c < bytes.cols; ++c) {
            const auto sample = samples.at<unsigned short>(r, c);
            bytes.at<cv::Vec2b>(r, c) = {static_cast<unsigned char>(sample >> 8),
                                         static_cast<unsigned char>(sample)};
        }
    sink.write(bytes);
    sink.finish();
}

} // namespace velmo::recordings
