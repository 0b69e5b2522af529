#include "recordings/films/Encoders.h"

#include "core/Exception.h"

#include <turbojpeg.h>

namespace velmo::recordings {
namespace {

constexpr int quality = 92;

struct DestroyTurbo
{
    void operator()(void* handle) const { tjDestroy(handle); }
};

/// By libjpeg-turbo: several times as fast as the encoder among the FFmpeg libraries.
class JpegEncoder : public Encoder
{
public:
    JpegEncoder(cv::Size size, std::string name) : m_oSize(size), m_strName(std::move(name)) {}

    void describe(AVCodecParameters& parameters) const override
    {
        parameters.codec_id = AV_CODEC_ID_MJPEG;
        parameters.width = m_oSize.width;
        parameters.height = m_oSize.height;
        parameters.format = AV_PIX_FMT_YUVJ422P;
    }

    void send(const cv::Mat* image) override
    {
        if (image == nullptr)
            return;
        require(av_new_packet(m_pPacket.get(),
                              static_cast<int>(tjBufSize(m_oSize.width, m_oSize.height, TJSAMP_422))),
                m_strName);
        unsigned char* bytes = m_pPacket->data;
        auto count = static_cast<unsigned long>(m_pPacket->size);
        if (tjCompress2(m_pTurbo.get(), image->data, m_oSize.width, static_cast<int>(image->step),
                        m_oSize.height, TJPF_BGR, &bytes, &count, TJSAMP_422, quality, TJFLAG_NOREALLOC) != 0)
            VELMO_THROW(m_strName + ": cannot be written: " + tjGetErrorStr2(m_pTurbo.get()));
        av_shrink_packet(m_pPacket.get(), static_cast<int>(count));
        m_pPacket->pts = m_pPacket->dts = m_s64Next++;
        m_pPacket->flags |= AV_PKT_FLAG_KEY;
    }

    bool receive(AVPacket& packet) override
    {
        if (m_pPacket->size == 0)
            return false;
        av_packet_move_ref(&packet, m_pPacket.get());
        return true;
    }

private:
    cv::Size m_oSize;
    std::string m_strName;
    std::unique_ptr<void, DestroyTurbo> m_pTurbo{tjInitCompress()};
    Packet m_pPacket{av_packet_alloc()};
    std::int64_t m_s64Next = 0;
};

} // namespace

std::unique_ptr<Encoder> createJpegEncoder(cv::Size size, const std::string& name)
{
    return std::make_unique<JpegEncoder>(size, name);
}

} // namespace velmo::recordings
