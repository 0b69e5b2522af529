#include "recordings/films/Encoders.h"
#include "recordings/films/Scaler.h"

#include "core/Exception.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <cstring>
#include <optional>

namespace velmo::recordings {
namespace {

/// An encoder of the FFmpeg libraries: the derived ones choose it and fill its frames.
class LibavEncoder : public Encoder
{
public:
    LibavEncoder(const char* encoder, cv::Size size, AVPixelFormat format, AVRational fps, std::string name)
        : m_strName(std::move(name))
    {
        const AVCodec* const codec = avcodec_find_encoder_by_name(encoder);
        if (codec == nullptr)
            VELMO_THROW(m_strName + ": cannot be written: the FFmpeg libraries have no encoder " + encoder);
        m_pCodec.reset(avcodec_alloc_context3(codec));
        m_pCodec->width = size.width;
        m_pCodec->height = size.height;
        m_pCodec->pix_fmt = format;
        m_pCodec->framerate = fps;
        m_pCodec->time_base = av_inv_q(fps);
        m_pImage->width = size.width;
        m_pImage->height = size.height;
        m_pImage->format = format;
        require(av_frame_get_buffer(m_pImage.get(), 0), m_strName);
    }

    void describe(AVCodecParameters& parameters) const override
    {
        require(avcodec_parameters_from_context(&parameters, m_pCodec.get()), m_strName);
    }

    void send(const cv::Mat* image) override
    {
        if (image != nullptr) {
            require(av_frame_make_writable(m_pImage.get()), m_strName); // the encoder may still hold the last
            fill(*image, *m_pImage);
            m_pImage->pts = m_s64Next++;
        }
        require(avcodec_send_frame(m_pCodec.get(), image == nullptr ? nullptr : m_pImage.get()), m_strName);
    }

    bool receive(AVPacket& packet) override
    {
        const int code = avcodec_receive_packet(m_pCodec.get(), &packet);
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return false;
        require(code, m_strName);
        return true;
    }

protected:
    AVCodecContext& codec() { return *m_pCodec; }
    void set(const char* option, const char* value)
    {
        require(av_opt_set(m_pCodec->priv_data, option, value, 0), m_strName);
    }
    void open() { require(avcodec_open2(m_pCodec.get(), m_pCodec->codec, nullptr), m_strName); }

private:
    virtual void fill(const cv::Mat& image, AVFrame& frame) = 0;

    std::string m_strName;
    Codec m_pCodec;
    Image m_pImage{av_frame_alloc()};
    std::int64_t m_s64Next = 0;
};

class Ffv1Encoder : public LibavEncoder
{
public:
    Ffv1Encoder(const cv::Mat& first, AVRational fps, const std::string& name)
        : LibavEncoder("ffv1", first.size(), first.depth() == CV_16U ? AV_PIX_FMT_GRAY16 : AV_PIX_FMT_BGR0,
                       fps, name)
    {
        codec().level = 3;
        codec().gop_size = 1; // every picture by itself: players can go to any of them
        codec().slices = 4;
        codec().thread_count = 0;
        codec().thread_type = FF_THREAD_SLICE;
        set("slicecrc", "1");
        open();
    }

private:
    void fill(const cv::Mat& image, AVFrame& frame) override
    {
        cv::Mat target(image.size(), image.depth() == CV_16U ? CV_16UC1 : CV_8UC4, frame.data[0],
                       static_cast<std::size_t>(frame.linesize[0]));
        if (image.channels() == 1) {
            image.copyTo(target);
            return;
        }
        const int channels[] = {0, 0, 1, 1, 2, 2, -1, 3};
        cv::mixChannels(&image, 1, &target, 1, channels, 4);
    }
};

class H264Encoder : public LibavEncoder
{
public:
    H264Encoder(cv::Size size, AVRational fps, bool globalHeader, const std::string& name)
        : LibavEncoder("libx264", size, AV_PIX_FMT_YUV420P, fps, name),
          m_oScaler(size, AV_PIX_FMT_BGR24, AV_PIX_FMT_YUV420P, name)
    {
        codec().color_range = AVCOL_RANGE_MPEG;
        codec().colorspace = AVCOL_SPC_BT709;
        codec().color_primaries = AVCOL_PRI_BT709;
        codec().color_trc = AVCOL_TRC_BT709;
        if (globalHeader)
            codec().flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        set("preset", "veryfast");
        set("crf", "18"); // as good as not packed to the eye
        open();
    }

private:
    void fill(const cv::Mat& image, AVFrame& frame) override
    {
        cv::Mat padded;
        cv::copyMakeBorder(image, padded, 0, frame.height - image.rows, 0, frame.width - image.cols,
                           cv::BORDER_REPLICATE);
        m_oScaler.toFilm(padded, frame);
    }

    Scaler m_oScaler;
};

} // namespace

std::unique_ptr<Encoder> createFfv1Encoder(const cv::Mat& first, AVRational fps, const std::string& name)
{
    return std::make_unique<Ffv1Encoder>(first, fps, name);
}

std::unique_ptr<Encoder> createH264Encoder(cv::Size size, AVRational fps, bool globalHeader,
                                           const std::string& name)
{
    const cv::Size even(size.width + size.width % 2, size.height + size.height % 2);
    return std::make_unique<H264Encoder>(even, fps, globalHeader, name);
}

} // namespace velmo::recordings
