#include "recordings/films/FilmReader.h"

#include "recordings/films/Decoder.h"
#include "recordings/films/Scaler.h"

#include "core/Exception.h"

extern "C" {
#include <libavutil/display.h>
}

#include <algorithm>

namespace velmo::recordings {
namespace {

constexpr const char* notAPicture = ": not a PNG, JPEG, BMP or PPM picture";
constexpr std::uint64_t maxFileBytes = std::uint64_t{1} << 30;

/// Turns a picture as the camera was held: matrices of turns and mirrors have ones and zeros only.
void setUpright(cv::Mat& picture, const AVFrame& frame)
{
    const AVFrameSideData* const data = av_frame_get_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX);
    if (data == nullptr)
        return;
    const auto* const matrix = reinterpret_cast<const std::int32_t*>(data->data);
    const bool turned = matrix[0] == 0;
    if (turned)
        cv::transpose(picture, picture);
    if (matrix[turned ? 3 : 0] < 0)
        cv::flip(picture, picture, 1);
    if (matrix[turned ? 1 : 4] < 0)
        cv::flip(picture, picture, 0);
}

AVCodecID codecOf(const std::uint8_t* bytes)
{
    const auto beginsWith = [&](int first, int second) { return bytes[0] == first && bytes[1] == second; };
    if (beginsWith(0xff, 0xd8))
        return AV_CODEC_ID_MJPEG;
    if (beginsWith('B', 'M'))
        return AV_CODEC_ID_BMP;
    if (beginsWith('P', '2') || beginsWith('P', '5'))
        return AV_CODEC_ID_PGM;
    return beginsWith('P', '3') || beginsWith('P', '6') ? AV_CODEC_ID_PPM : AV_CODEC_ID_NONE;
}

} // namespace

cv::Mat_<cv::Vec3b> readColours(ByteFile file, const std::string& name)
{
    const std::uint64_t bytes = sizeOf(file.get());
    if (bytes < 2 || bytes > maxFileBytes)
        VELMO_THROW(name + notAPicture);
    const Packet packet(av_packet_alloc());
    require(av_new_packet(packet.get(), static_cast<int>(bytes)), name);
    readBytes(file.get(), name, packet->data, bytes);

    const std::unique_ptr<AVCodecParameters, Freed<AVCodecParameters, avcodec_parameters_free>> parameters(
        avcodec_parameters_alloc());
    parameters->codec_type = AVMEDIA_TYPE_VIDEO;
    parameters->codec_id = codecOf(packet->data);
    if (parameters->codec_id == AV_CODEC_ID_NONE)
        VELMO_THROW(name + notAPicture);
    Decoder decoder(*parameters, name);
    const Image frame(av_frame_alloc());
    decoder.send(packet.get());
    decoder.send(nullptr);
    if (!decoder.receive(*frame))
        VELMO_THROW(name + ": not a whole picture");
    Scaler scaler({frame->width, frame->height}, static_cast<AVPixelFormat>(frame->format), AV_PIX_FMT_BGR24,
                  name);
    cv::Mat picture = scaler.toPicture(*frame);
    setUpright(picture, *frame);
    return picture;
}

} // namespace velmo::recordings
