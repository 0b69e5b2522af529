#include "recordings/films/Scaler.h"

#include "core/Exception.h"

extern "C" {
#include <libswscale/swscale.h>
}

#include <array>

namespace velmo::recordings {
namespace {

constexpr int exact = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;
constexpr int neutral = 1 << 16; ///< contrast and saturation as they are

/// Pixels behind each row, and a row: swscale reads and writes whole vectors, beyond the ends of rows.
constexpr int s32Room = 64;

/// JPEG has formats of its own for values from 0 to 255; swscale is told the range instead.
AVPixelFormat plain(AVPixelFormat format, bool& fullRange)
{
    fullRange = true;
    switch (format) {
    case AV_PIX_FMT_YUVJ420P:
        return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
        return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
        return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
        return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ411P:
        return AV_PIX_FMT_YUV411P;
    default:
        fullRange = false;
        return format;
    }
}

} // namespace

Scaler::Scaler(cv::Size size, AVPixelFormat from, AVPixelFormat to, const std::string& name)
    : m_oSize(size),
      m_oRoomy(cv::Mat_<cv::Vec3b>(size + cv::Size(s32Room, 1), cv::Vec3b())(cv::Rect(cv::Point(), size))),
      m_pContext(sws_getContext(size.width, size.height, plain(from, m_bFullRange), size.width, size.height,
                                to, exact, nullptr, nullptr, nullptr))
{
    if (m_pContext == nullptr)
        VELMO_THROW(name + ": its pictures have colours that cannot be converted");
}

Scaler::~Scaler()
{
    sws_freeContext(m_pContext);
}

void Scaler::toFilm(const cv::Mat& picture, AVFrame& frame)
{
    const int* const rgb = sws_getCoefficients(SWS_CS_DEFAULT);
    sws_setColorspaceDetails(m_pContext, rgb, 1, sws_getCoefficients(SWS_CS_ITU709), 0, 0, neutral, neutral);
    picture.copyTo(m_oRoomy);
    const std::array<const std::uint8_t*, 4> from = {m_oRoomy.data};
    const std::array<int, 4> stride = {static_cast<int>(m_oRoomy.step)};
    sws_scale(m_pContext, from.data(), stride.data(), 0, m_oSize.height, frame.data, frame.linesize);
}

cv::Mat_<cv::Vec3b> Scaler::toPicture(const AVFrame& frame)
{
    const int* const rgb = sws_getCoefficients(SWS_CS_DEFAULT);
    sws_setColorspaceDetails(m_pContext, sws_getCoefficients(SWS_CS_ITU601), m_bFullRange ? 1 : 0, rgb, 1, 0,
                             neutral, neutral);
    const std::array<std::uint8_t*, 4> to = {m_oRoomy.data};
    const std::array<int, 4> stride = {static_cast<int>(m_oRoomy.step)};
    sws_scale(m_pContext, frame.data, frame.linesize, 0, m_oSize.height, to.data(), stride.data());
    return m_oRoomy.clone();
}

} // namespace velmo::recordings
