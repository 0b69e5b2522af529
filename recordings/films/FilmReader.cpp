#include "recordings/films/FilmReader.h"

#include "recordings/ByteOrder.h"
#include "recordings/UnitText.h"
#include "recordings/films/Decoder.h"
#include "recordings/films/Libav.h"

#include "core/Exception.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>

namespace velmo::recordings {
namespace {

/// The grey values of a frame, as they are.
cv::Mat greyValues(AVFrame& frame, const std::string& name)
{
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    const bool grey = description.nb_components == 1 && (description.flags & AV_PIX_FMT_FLAG_PAL) == 0 &&
                      (description.flags & AV_PIX_FMT_FLAG_FLOAT) == 0 && description.comp[0].depth >= 8;
    if (!grey)
        VELMO_THROW(name + ": not a film of grey values (its pixels are " + description.name + ")");
    const int type = description.comp[0].depth > 8 ? CV_16U : CV_8U;
    // Rows are padded, and backwards in some films.
    cv::Mat image(frame.height, frame.width, type);
    for (int r = 0; r < image.rows; ++r)
        std::memcpy(image.ptr(r), frame.data[0] + std::ptrdiff_t{r} * frame.linesize[0],
                    static_cast<std::size_t>(image.cols) * image.elemSize());
    image = inOrder(image, (description.flags & AV_PIX_FMT_FLAG_BE) != 0);
    image.convertTo(image, CV_16U);
    return image;
}

/// Packed by FFV1 or not at all: other decoders keep many pictures, as many as the film wants.
const AVCodecParameters& grey(const AVCodecParameters& parameters, const std::string& name)
{
    if (parameters.codec_id != AV_CODEC_ID_FFV1 && parameters.codec_id != AV_CODEC_ID_RAWVIDEO)
        VELMO_THROW(name + ": not a film of grey values (it is packed by " +
                    avcodec_get_name(parameters.codec_id) + "; ffv1 or nothing is read)");
    return parameters;
}

/// Tries the header on a picture in which there is no room for more slices: FFV1 keeps up to 2 MiB for each
/// that the header names, whatever the size of the pictures.
const AVCodecParameters& requireFewSlices(const AVCodecParameters& parameters, const std::string& name)
{
    constexpr int most = 8;
    if (parameters.codec_id != AV_CODEC_ID_FFV1)
        return parameters;
    const Parameters small(avcodec_parameters_alloc());
    require(avcodec_parameters_copy(small.get(), &parameters), name);
    small->width = small->height = most;
    try {
        Decoder(*small, name);
    } catch (const exp::Exception&) {
        VELMO_THROW(name + ": its pictures have more than " + std::to_string(most) + " x " +
                    std::to_string(most) + " slices, or their header is broken");
    }
    return parameters;
}

class FilmReader : public ImageFile
{
public:
    FilmReader(ByteFile file, const std::string& name)
        : m_pFile(std::move(file)), m_strName(name), m_oInput(m_pFile.get(), name, Origin::Elsewhere),
          m_oDecoder(requireFewSlices(grey(*m_oInput.film().codecpar, name), name), name)
    {}

    bool next(cv::Mat& image) override
    {
        while (!m_oDecoder.receive(*m_pImage)) {
            if (m_bEnded)
                return false;
            m_bEnded = !m_oInput.next(*m_pPacket);
            m_oDecoder.send(m_bEnded ? nullptr : m_pPacket.get());
        }
        image = greyValues(*m_pImage, m_strName);
        return true;
    }

    std::optional<std::size_t> count() const override { return std::nullopt; } // headers may be wrong
    std::string unit() const override { return m_oInput.text(unitTag); }

private:
    ByteFile m_pFile;
    std::string m_strName;
    LibavInput m_oInput;
    Decoder m_oDecoder;
    Packet m_pPacket{av_packet_alloc()};
    Image m_pImage{av_frame_alloc()};
    bool m_bEnded = false;
};

} // namespace

std::unique_ptr<ImageFile> openFilm(ByteFile file, const std::string& name)
{
    return std::make_unique<FilmReader>(std::move(file), name);
}

} // namespace velmo::recordings
