#pragma once

#include "core/Exception.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

#include <memory>
#include <string>

namespace velmo::exp {

struct PxMFile;

/// Reads images of the Netpbm family: grey (P2, P5), colour (P3, P6) and arbitrary maps (P7, 1 to 16
/// channels), with 8 or 16-bit samples. Bitmaps (P1, P4) are not among them.
///
/// Of a file that holds several images the first is read. The file's bytes stay in memory until the next
/// `open` or the end of the decoder; copies share them. Distinct decoders may be used on distinct threads,
/// `grab` also on one.
class VELMO_API ImageDecoderPxM
{
public:
    ImageDecoderPxM();
    ~ImageDecoderPxM();
    ImageDecoderPxM(const ImageDecoderPxM&) = default;
    ImageDecoderPxM(ImageDecoderPxM&&) noexcept = default;
    ImageDecoderPxM& operator=(const ImageDecoderPxM&) = default;
    ImageDecoderPxM& operator=(ImageDecoderPxM&&) noexcept = default;

    /// Reads the file and its header; what was open before is closed.
    ///
    /// Returns false, with nothing open, if `path` is not a regular file that can be read or does not begin
    /// with the complete header of such an image: sides from 0 to 2^31 - 1 and a MAXVAL from 1 to 65535.
    /// @throws Exception  if memory does not suffice for the file.
    bool open(const std::string& path);

    /// Decodes the open image; may be called again and again.
    ///
    /// @param image   becomes rows x cols of CV_16UC(channels) with the file's sample values, unscaled;
    ///                colour in the file's order, red first. Always newly allocated.
    /// @param region  the part to decode, not empty and inside the image; null for the whole image, which
    ///                may have no rows or columns. Samples beyond the region are not looked at, but for a
    ///                text raster (P2, P3), which is read up to the region's last row.
    /// @throws Exception  if nothing is open, the region is empty or leaves the image, the raster is
    ///                    truncated or malformed, a sample lies above MAXVAL, or memory does not suffice.
    ///                    `image` is untouched then.
    void grab(cv::Mat& image, const cv::Rect_<int>* region = nullptr) const;

private:
    std::shared_ptr<const PxMFile> m_pFile;
};

} // namespace velmo::exp
