#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/datatypes/Endian.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace velmo::exp::vision {

/// A detector position, or an offset between two. A map is addressed as map(y, x).
struct Pixel
{
    short x = 0; ///< column, 0 is the leftmost
    short y = 0; ///< row, 0 is the topmost

    friend bool operator==(const Pixel& a, const Pixel& b) { return a.x == b.x && a.y == b.y; }
    friend bool operator!=(const Pixel& a, const Pixel& b) { return !(a == b); }
};

/// A defective pixel and the four good ones that stand in for it: ten 16-bit values without padding. The
/// replacement positions are absolute; what each slot means is up to who filled them.
struct VELMO_API BadPixel
{
    Pixel pixel;
    Pixel replacePixel[4];

    /// Fills the slots with the neighbours at the left, at the right, above and below. They are not checked
    /// against any frame: at an edge they lie outside of it, at -32768 and 32767 they wrap.
    void setStandardReplacePixel();

    /// Bytes of the byte image: always 20.
    unsigned long sizeofType() const;

    /// Writes the byte image: the ten values in the order of the members.
    ///
    /// @param endian  Swapped turns the bytes of each value round; any other value copies them as they lie in
    ///                memory.
    /// @param buffer  at least 20 bytes, at any alignment
    /// @return bytes written: 20
    unsigned long serialize(Endian endian, char* buffer) const;

    /// Reads the byte image; any 20 bytes are one.
    ///
    /// @param endian  as serialize has it
    /// @param buffer  at least 20 bytes, at any alignment
    /// @param size    becomes the number of bytes read: 20
    void deserialize(Endian endian, const char* buffer, unsigned long& size);

    friend bool operator==(const BadPixel& a, const BadPixel& b)
    {
        return a.pixel == b.pixel && std::equal(a.replacePixel, a.replacePixel + 4, b.replacePixel);
    }
    friend bool operator!=(const BadPixel& a, const BadPixel& b) { return !(a == b); }
};

static_assert(sizeof(Pixel) == 4 && sizeof(BadPixel) == 20, "records are copied as bytes");

/// Finds defective pixels, finds good ones to replace them and carries the result to and from map images.
///
/// A pixel map has the size of a frame: 0 is a good pixel, anything else holds the flags of those who
/// rejected it. Every operation takes matrices with padded rows (regions of larger ones) too. None keeps
/// state; all may run on several threads at once, on different maps.
class VELMO_API BadPixelTools
{
public:
    // Exported, and constant expressions as well.
    static const unsigned int u32BadNetd = 2;        ///< set by checkNetd
    static const unsigned int u32BadRowCol = 16;     ///< set by detectBadRowsAndColumns
    static const unsigned int u32BadCurve = 32;      ///< set by checkMonotonic
    static const unsigned int u32BadHomogenity = 64; ///< set by detectBadPixelHistogram

    /// For each replacement slot the offsets to try with their distances, nearest first.
    using ReplacePixelQuery = std::array<std::vector<std::pair<float, Pixel>>, 4>;

    /// What checkNetd measured over the pixels that were good until then. Not numbers if there were none.
    struct NetdCheckResults
    {
        double dMeanNetd = 0;         ///< in the unit of the temperatures
        double dMeanResponsivity = 0; ///< digits per unit of the temperatures
        double dMeanNoise = 0;        ///< digits
        bool bBadPixelsFound = false; ///< this call flagged a pixel
    };

    /// The offsets of a disc, split into a quadrant for each slot: right (dx >= 1, dy >= 0), below (dx <= 0,
    /// dy >= 1), above (dx >= 0, dy <= -1) and left (dx <= -1, dy <= 0). Takes about 38 bytes times
    /// the square of the radius.
    ///
    /// @param radius  in pixels; below 1 the lists are empty
    /// @throws Exception  if the radius is above 32767, where offsets leave 16 bits, or memory runs out.
    static ReplacePixelQuery computeReplacePixelQuery(int radius);

    /// Fills the slots of a record whose `pixel` is set with the first good pixel of each list. A slot
    /// without one takes the pixel of another slot. For a whole map calculateReplacePixels is faster.
    ///
    /// @return false if no list has a good pixel; the record is untouched then
    static bool calculateSingleReplacePixel(const cv::Mat_<int>& map, const ReplacePixelQuery& query,
                                            BadPixel& badPixel);

    /// A record for every bad pixel of the map, line by line, with the nearest good pixel of each quadrant.
    ///
    /// @param map     any size; of pixels beyond column or row 32767 the record holds the low 16 bits
    /// @param radius  how far to search, in pixels; what is beyond the map's diagonal changes nothing. Read
    ///                as a signed number: 0 and what is above 2^31 - 1 find nothing.
    /// @return none for a map without bad pixels, whatever the radius
    /// @throws Exception  if a bad pixel has no good one within the radius, or if both radius and diagonal
    ///                    are above 32767.
    static std::vector<BadPixel> calculateReplacePixels(const cv::Mat_<int>& map, unsigned int radius);

    /// Marks the pixels of the records in the map, with u32BadHomogenity alone in place of their flags, and
    /// returns the records of the whole map as above. What the records name as replacement is ignored.
    ///
    /// @throws Exception  as above, with the marks in the map if a bad pixel finds no good one; if a
    ///                    record lies outside the map, which is unchanged then.
    static std::vector<BadPixel> recalculateReplacePixels(std::vector<BadPixel> badPixels, cv::Mat_<int>& map,
                                                          unsigned int radius);

    /// Flags what lies outside the populated core of the histogram of a frame that shows one temperature:
    /// bins of 2 % of the mean, outward from the fullest one until one holds fewer than `u64MinCount` pixels.
    ///
    /// @param frame        raw detector values of any size
    /// @param map          becomes a new map if it has not the frame's size; otherwise earlier flags stay
    /// @param u64MinCount  of a populated bin
    /// @return pixels flagged by this call, among them those that had the flag already
    static unsigned long detectBadPixelHistogram(const cv::Mat_<short>& frame, cv::Mat_<int>& map,
                                                 unsigned long u64MinCount);

    /// Flags whole columns and rows that hold more bad pixels (positive ones; a negative value does not
    /// count) than the limits. Flags for rows do not count for columns.
    static void detectBadRowsAndColumns(cv::Mat_<int>& map, unsigned int u32MaxBadPerColumn,
                                        unsigned int u32MaxBadPerRow);

    /// Flags pixels that do not rise from each frame to the next.
    ///
    /// @param frames  at rising temperature of the scene
    /// @param map     of their size
    /// @throws Exception  if there are fewer than two frames or sizes differ; the map is unchanged then.
    static void checkMonotonic(const std::vector<cv::Mat_<short>>& frames, cv::Mat_<int>& map);

    /// Compares the responsivity, the noise and the NETD of each pixel with the means over the pixels that
    /// are good so far. A pixel whose two readings are equal is flagged; it takes no part in the means, and
    /// neither do pixels flagged before: of both kinds the noise alone is compared.
    ///
    /// @param frame1, frame2  a uniform target; the difference of two readings wraps at 16 bits
    /// @param noise           noise of each pixel in digits
    /// @param map             of their size
    /// @param dTemp1, dTemp2  the temperatures of the target, in any unit
    /// @param dFactorResponsivity, dFactorNoise, dFactorNetd  how far from the mean is good, relative to it:
    ///                        0.5 accepts 50 % more or less
    /// @throws Exception  if sizes differ or the temperatures are equal; the map is unchanged then.
    static NetdCheckResults checkNetd(const cv::Mat_<short>& frame1, const cv::Mat_<short>& frame2,
                                      const cv::Mat_<short>& noise, cv::Mat_<int>& map, double dTemp1,
                                      double dTemp2, double dFactorResponsivity, double dFactorNoise,
                                      double dFactorNetd);

    /// The records as a map image to be encoded: a row of ten values (CV_16SC1) for each record. Encoders
    /// take their 16 bits through an unsigned view; cv::imwrite would make 8 bits of signed ones:
    ///
    ///     cv::Mat image = BadPixelTools::convertBadPixelToPxmFormat(records);
    ///     cv::imwrite("records.pgm", cv::Mat(image.size(), CV_16UC1, image.data, image.step));
    ///
    /// @throws Exception  if there are more than 65535.
    static cv::Mat convertBadPixelToPxmFormat(std::vector<BadPixel> badPixels);

    /// Reads a map image: grey, ten columns (further ones are ignored), at most 65535 rows. Positions are
    /// taken as they are.
    ///
    /// @throws Exception  if the file cannot be opened or is not such an image.
    static std::vector<BadPixel> loadBadPixelFromPxm(const std::string& path);
};

} // namespace velmo::exp::vision
