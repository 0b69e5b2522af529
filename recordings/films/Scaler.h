#pragma once

#include "recordings/films/Libav.h"

#include <opencv2/core.hpp>

#include <string>

struct SwsContext;

namespace velmo::recordings {

/// Turns pictures of one pixel format into another, of the same size.
class Scaler
{
public:
    Scaler(cv::Size size, AVPixelFormat from, AVPixelFormat to, const std::string& name);
    ~Scaler();
    Scaler(const Scaler&) = delete;
    Scaler& operator=(const Scaler&) = delete;

    /// Blue, green, red to a frame of HDTV colours, as players take them.
    void toFilm(const cv::Mat& picture, AVFrame& frame);

    /// A frame as blue, green, red.
    cv::Mat_<cv::Vec3b> toPicture(const AVFrame& frame);

private:
    cv::Size m_oSize;
    bool m_bFullRange;
    cv::Mat_<cv::Vec3b> m_oRoomy; ///< a picture with room behind its rows
    SwsContext* m_pContext;
};

} // namespace velmo::recordings
