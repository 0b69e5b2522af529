#include "recordings/films/Decoder.h"

#include "recordings/ImageFile.h"
#include "recordings/ImageSize.h"

#include "core/Exception.h"

namespace velmo::recordings {

Decoder::Decoder(const AVCodecParameters& parameters, std::string name) : m_strName(std::move(name))
{
    const AVCodec* const codec = avcodec_find_decoder(parameters.codec_id);
    if (codec == nullptr)
        VELMO_THROW(m_strName + ": its pictures are packed in a way that cannot be read (" +
                    avcodec_get_name(parameters.codec_id) + ")");
    m_pCodec.reset(avcodec_alloc_context3(codec));
    require(avcodec_parameters_to_context(m_pCodec.get(), &parameters), m_strName);
    m_pCodec->max_pixels = std::int64_t{s32MaxImageSide} * s32MaxImageSide;
    m_pCodec->thread_count = 0;
    m_pCodec->thread_type = FF_THREAD_SLICE;
    m_pCodec->err_recognition = AV_EF_EXPLODE | AV_EF_CRCCHECK;
    require(avcodec_open2(m_pCodec.get(), codec, nullptr), m_strName);
}

void Decoder::send(const AVPacket* packet)
{
    require(avcodec_send_packet(m_pCodec.get(), packet), m_strName);
}

bool Decoder::receive(AVFrame& frame)
{
    const int code = avcodec_receive_frame(m_pCodec.get(), &frame);
    if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
        return false;
    require(code, m_strName);
    requireImageSize(m_strName, static_cast<std::uint64_t>(frame.width),
                     static_cast<std::uint64_t>(frame.height));
    return true;
}

} // namespace velmo::recordings
