#pragma once

#include "camera/Frame.h"
#include "camera/pixels/PixelMap.h"
#include "camera/pixels/PixelSearch.h"

#include "core/Exception.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmo::camera {

/// How far each pixel of one sensor is off, as it shows when all of them see the same: a closed shutter.
struct VELMO_API FlatField
{
    cv::Mat_<float> shutter; ///< what each pixel reads of it, in counts
    cv::Mat_<float> gains;   ///< by what its distance from there is multiplied; around 1
    PixelMap defects;        ///< flags of the library's detectors; 0 is a good pixel

    bool empty() const { return shutter.empty(); }

    /// What a good pixel reads of the shutter, by the median.
    float level() const;

    /// The three planes in this order, for files of floating-point numbers.
    std::vector<cv::Mat_<float>> planes() const;

    /// @param planes  in the order of planes()
    /// @param what    begins the message of what is refused
    /// @throws Exception  for planes that are not three of one size, a reading that is no count of 16 bits, a
    ///                    gain that is not from 0.1 to 10, flags of more than 16 bits, and where no pixel
    ///                    is good
    static FlatField fromPlanes(const std::vector<cv::Mat_<float>>& planes, const std::string& what);
};

/// Learns a flat field: of one recording of the closed shutter how far each pixel is off, of another one at
/// another temperature how strongly it responds, too. Pixels that are defective beyond what a flat field
/// corrects are flagged on the way: those that PixelSearch finds in what changes from the first frame on, and
/// those that respond by less than half or more than twice of what others do.
class VELMO_API FlatLearner
{
public:
    /// @throws Exception  for a frame of fewer than 5 x 5 pixels, and for one of another size, as addOther
    void add(const Frame& frame);

    /// A frame of anything as uniform, at another temperature.
    void addOther(const Frame& frame);

    /// @throws Exception  if there was no frame of the shutter, and if both recordings are so much alike that
    ///                    how they differ is noise: by more than a quarter among the good pixels
    FlatField learn() const;

private:
    /// One of the two.
    struct Recording
    {
        void add(const Frame& frame, const Recording& beside);
        cv::Mat_<float> mean() const;

        cv::Mat_<double> m_oSum;
        std::size_t m_nFrames = 0;
        std::optional<PixelSearch> m_oSearch;
    };

    void learnGains(FlatField& field) const;

    Recording m_oShutter;
    Recording m_oOther;
};

} // namespace velmo::camera
