#pragma once

#include "recordings/films/Libav.h"

#include <opencv2/core.hpp>

#include <memory>
#include <string>

namespace velmo::recordings {

/// Pictures in, packets out.
class Encoder
{
public:
    virtual ~Encoder() = default;

    /// What a container says of the packets.
    virtual void describe(AVCodecParameters& parameters) const = 0;

    /// @param image  null behind the last one
    virtual void send(const cv::Mat* image) = 0;

    /// False if it keeps what it has, for now or, behind the last image, for good.
    virtual bool receive(AVPacket& packet) = 0;
};

/// Motion JPEG: 4:2:2, good enough that colours of a palette are not washed out.
std::unique_ptr<Encoder> createJpegEncoder(cv::Size size, const std::string& name);

/// FFV1, which loses nothing, of counts or of pictures.
std::unique_ptr<Encoder> createFfv1Encoder(const cv::Mat& first, AVRational fps, const std::string& name);

/// H.264; an odd side is padded by a copy of its last line.
std::unique_ptr<Encoder> createH264Encoder(cv::Size size, AVRational fps, bool globalHeader,
                                           const std::string& name);

} // namespace velmo::recordings
