#include "recordings/films/FilmWriter.h"

#include "recordings/ImageSize.h"
#include "recordings/UnitText.h"
#include "recordings/films/Encoders.h"
#include "recordings/films/Libav.h"

#include "core/Exception.h"

#include <cmath>
#include <optional>

namespace velmo::recordings {
namespace {

using Container = FilmFormat::Container;

const char* muxerOf(Container container)
{
    switch (container) {
    case Container::Avi:
        return "avi";
    case Container::Mkv:
        return "matroska";
    default:
        return "mp4";
    }
}

/// The container that packets go into.
class LibavOutput
{
public:
    LibavOutput(const OutputFile& file, const FilmFormat& format, AVRational fps)
        : m_strName(file.name()), m_oFile(file.get(), true)
    {
        require(avformat_alloc_output_context2(&m_pContext, nullptr, muxerOf(format.container), nullptr),
                m_strName);
        m_pContext->pb = m_oFile.get();
        m_pContext->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
        if (!format.unit.empty())
            av_dict_set(&m_pContext->metadata, unitTag, format.unit.c_str(), 0);
        AVStream& stream = *avformat_new_stream(m_pContext, nullptr);
        stream.time_base = m_oTick = av_inv_q(fps);
        stream.avg_frame_rate = stream.r_frame_rate = fps;
    }
    ~LibavOutput() { avformat_free_context(m_pContext); }
    LibavOutput(const LibavOutput&) = delete;
    LibavOutput& operator=(const LibavOutput&) = delete;

    bool wantsGlobalHeader() const { return (m_pContext->oformat->flags & AVFMT_GLOBALHEADER) != 0; }

    void begin(const Encoder& encoder)
    {
        AVCodecParameters& parameters = *m_pContext->streams[0]->codecpar;
        parameters.codec_type = AVMEDIA_TYPE_VIDEO;
        encoder.describe(parameters);
        require(avformat_write_header(m_pContext, nullptr), m_strName);
    }

    /// @param packet  its times count pictures
    void write(AVPacket& packet)
    {
        packet.duration = 1;
        av_packet_rescale_ts(&packet, m_oTick, m_pContext->streams[0]->time_base);
        require(av_interleaved_write_frame(m_pContext, &packet), m_strName);
    }

    void end() { require(av_write_trailer(m_pContext), m_strName); }

private:
    std::string m_strName;
    LibavFile m_oFile;
    AVFormatContext* m_pContext = nullptr;
    AVRational m_oTick = {1, 1};
};

class FilmWriter : public ImageWriter
{
public:
    FilmWriter(OutputFile file, FilmFormat format)
        : m_oFile(std::move(file)), m_oFormat(std::move(format)), m_oRate(av_d2q(m_oFormat.fps, 1000000))
    {}

    void write(const cv::Mat& image) override
    {
        m_oShape.require(image, m_oFile.name());
        if (!m_pEncoder)
            begin(image);
        m_pEncoder->send(&image);
        ++m_nImages;
        drain();
    }

    void finish() override
    {
        if (m_pEncoder) {
            m_pEncoder->send(nullptr);
            drain();
            m_oOutput->end();
            m_oOutput.reset();
            check();
        }
        m_oFile.finish();
    }

private:
    void begin(const cv::Mat& first)
    {
        requireImageSize(m_oFile.name(), static_cast<std::uint64_t>(first.cols),
                         static_cast<std::uint64_t>(first.rows));
        m_oOutput.emplace(m_oFile, m_oFormat, m_oRate);
        m_pEncoder = createEncoder(first);
        m_oOutput->begin(*m_pEncoder);
    }

    std::unique_ptr<Encoder> createEncoder(const cv::Mat& first) const
    {
        if (m_oFormat.container == Container::Mkv)
            return createFfv1Encoder(first, m_oRate, m_oFile.name());
        if (first.type() != CV_8UC3)
            VELMO_THROW(m_oFile.name() + ": only an .mkv takes frames of 16 bits");
        return m_oFormat.container == Container::Avi
                   ? createJpegEncoder(first.size(), m_oFile.name())
                   : createH264Encoder(first.size(), m_oRate, m_oOutput->wantsGlobalHeader(), m_oFile.name());
    }

    void drain()
    {
        while (m_pEncoder->receive(*m_pPacket))
            m_oOutput->write(*m_pPacket);
    }

    /// What a person gets is what was written: a full disk shows here at the latest.
    void check() const
    {
        if (std::fflush(m_oFile.get()) != 0 || std::ferror(m_oFile.get()) != 0)
            m_oFile.refuse();
        std::rewind(m_oFile.get());
        LibavInput film(m_oFile.get(), m_oFile.name(), Origin::Here);
        std::size_t images = 0;
        while (film.next(*m_pPacket))
            ++images;
        const auto declared = static_cast<std::size_t>(film.film().nb_frames); // 0 where the format says none
        if (images != m_nImages || (declared != 0 && declared != m_nImages))
            VELMO_THROW(m_oFile.name() + ": cannot be written: it holds " + std::to_string(images) + " of " +
                        std::to_string(m_nImages) + " pictures");
        const double rate = av_q2d(film.film().avg_frame_rate);
        if (std::abs(rate - m_oFormat.fps) > 1e-4 * m_oFormat.fps)
            VELMO_THROW(m_oFile.name() + ": cannot be written: its rate would be " + std::to_string(rate) +
                        " pictures per second");
    }

    OutputFile m_oFile;
    FilmFormat m_oFormat;
    AVRational m_oRate;
    OneShape m_oShape;
    std::optional<LibavOutput> m_oOutput;
    std::unique_ptr<Encoder> m_pEncoder;
    Packet m_pPacket{av_packet_alloc()};
    std::size_t m_nImages = 0;
};

} // namespace

std::unique_ptr<ImageWriter> createFilm(OutputFile file, const FilmFormat& format)
{
    return std::make_unique<FilmWriter>(std::move(file), format);
}

} // namespace velmo::recordings
