#pragma once

#include "core/Exception.h"
#include "core/Export.h"

#include <algorithm>
#include <string>
#include <vector>

namespace velmo::vision {

/// Where one pixel of a corrected image comes from. A plain value of 10 bytes.
struct PixelCorrInfo
{
    /// All zero.
    PixelCorrInfo() = default;

    PixelCorrInfo(short offset, unsigned short weight0, unsigned short weight1, unsigned short weight2,
                  unsigned short weight3)
        : m_s16Offset(offset), m_au16Weights{weight0, weight1, weight2, weight3}
    {}

    short m_s16Offset = 0;                ///< from the pixel's own linear index to that of its source pixel
    unsigned short m_au16Weights[4] = {}; ///< of the source pixel and its neighbours, in the map file's order

    friend bool operator==(const PixelCorrInfo& a, const PixelCorrInfo& b)
    {
        return a.m_s16Offset == b.m_s16Offset &&
               std::equal(a.m_au16Weights, a.m_au16Weights + 4, b.m_au16Weights);
    }
    friend bool operator!=(const PixelCorrInfo& a, const PixelCorrInfo& b) { return !(a == b); }
};

/// A lens-distortion map: one record per pixel of the corrected image, row by row.
///
/// Keeps and checks the map; applying it is the caller's: pixel i of the corrected image is interpolated
/// around pixel i + offset of the raw frame of the same size. What the weights mean beside that is settled
/// by whoever writes the map.
class VELMO_API DistortionCorrection
{
public:
    /// Takes the records as they are.
    explicit DistortionCorrection(const std::vector<PixelCorrInfo>& records);

    /// Loads a map file.
    /// @throws Exception  as loadPixelCorrInfoFromPxm does
    DistortionCorrection(const std::string& path, int height, int width);

    /// One per pixel of the map, row by row.
    const std::vector<PixelCorrInfo>& getPixelCorrInfo() const { return m_vecPixelCorrInfo; }

    /// Reads a map: an image of the PxM family with six 16-bit channels, which are the displacement in rows
    /// and in columns (two's complement) and four weights. An offset that does not fit 16 bits wraps.
    /// @param path           of the file
    /// @param height, width  rows and columns that the image should have; 0 does not check
    /// @throws Exception  if the file cannot be read or holds other than six channels, if the image has
    ///                    another size, or if a source pixel lies outside the image
    static std::vector<PixelCorrInfo> loadPixelCorrInfoFromPxm(const std::string& path, int height,
                                                               int width);

private:
    std::vector<PixelCorrInfo> m_vecPixelCorrInfo;
};

} // namespace velmo::vision
