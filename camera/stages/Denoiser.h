// Not installed.
#pragma once

#include "camera/Frame.h"
#include "camera/LastFrame.h"
#include "camera/stages/DenoiseKernel.h"
#include "camera/stages/DenoiseNoise.h"
#include "camera/stages/DenoiseShift.h"
#include "camera/stages/DenoiseStripes.h"

#include <vector>

namespace velmo::camera {

/// How much is taken off.
struct DenoiseStrength
{
    float leastGain; ///< with which the estimate follows the frames: smaller is a longer mean
    float gates;     ///< how far what the spatial step takes for noise goes, 1 as measured
};

/// Takes noise and stripes off the frames of a stream, whatever their size is: nothing about the camera has
/// to be known.
///
/// It keeps an estimate E of the scene, float per pixel, and its age. A frame z passes these steps:
///
/// 1. Level: from the median of z - E on to the mean of what is within noise. E keeps its level.
/// 2. Stripes that change: for columns and rows, the clipped means of z - E in four segments. What the
///    segments agree on is a stripe, and taken off z. A small share goes into E, which so finds their mean.
/// 3. Movement: where a shift of E brings it nearer to z all over the picture, E is moved there, and 1 and 2
///    are done again. What comes into the picture begins as a mean of what is around it, unless that varies
///    by more than noise. The detail that E lost between pixels is no noise. Of what is left, the shift that
///    best explains the residual r = z - E by the slope of E, by least squares in tiles none of which has
///    more than its say. A sudden one starts E anew.
/// 4. Change: where r has more energy than noise in five by five pixels, in one, or in their sum, or where
///    the shift explains it. E follows there at once. Elsewhere E is the mean of the frames since, and then
///    a running mean.
/// 5. Stripes that stay: the same segments, against the nine pixels around, in E; only as large as its
///    noise, or as that of a frame where most lines have them and they are white.
/// 6. Noise in E: the energy of its finest diagonal octave where the next octave has least. If that has far
///    more even there it is texture, and the noise is what the mean left of the noise in time: all that
///    lasts from frame to frame, of the rest what so long a mean has.
/// 7. Detail: octaves of E, each smoothed as far as neighbours differ by no more than noise; in the finest
///    two a slope is no difference, as far as it bends by no more than noise. Where most neighbours differ
///    by more is texture, and stays.
///
/// The result is E less 5 and 7, at the level of z. It is not fed back: 1 to 4 see E alone, so nothing runs
/// away. No frame waits for a later one. A repeated frame gives the last result again.
///
/// After the first frame of a size, nothing is allocated.
class Denoiser
{
public:
    explicit Denoiser(DenoiseStrength strength);

    /// @param in   frames of less than 16 rows or columns pass as they are
    /// @param out  becomes as large as `in`; may be `in`
    void process(const Frame& in, Frame& out);

private:
    void start(const Frame& frame);
    void follow(const Frame& frame);
    void compare(const Frame& frame);
    void moveEstimate(const SceneShift& shift);
    void moveAges(int x, int y);
    void beginUnseen(const Frame& frame);
    void findLevel(const Frame& frame);
    float deviationOf(const Frame& frame);
    void leaveLostDetailOut(const Frame& frame, int top, float* blocks);
    float mostDeviationOf(const Frame& frame);
    void findStripes(const Frame& frame, float deviation);
    void takeResiduals(const Frame& frame);
    void explain(int row);
    void update(const Frame& frame);
    void correlate();
    float noiseLeft() const;
    void findNoise();
    void findFixedStripes();
    void smooth();
    void finish(Frame& out);

    float* estimate(int row) { return m_vecEstimate.data() + std::ptrdiff_t{row} * m_s32Columns; }
    float* age(int row) { return m_vecAge.data() + m_nFirstAge + std::ptrdiff_t{row} * m_s32Columns; }
    /// The estimate becomes smoother each time it moves: it is a shorter mean then.
    float leastGain() const
    {
        constexpr float fMoved = 0.15F;
        return m_bMoved ? std::max(fMoved, m_oStrength.leastGain) : m_oStrength.leastGain;
    }
    Stripes stripesOf(int row) const
    {
        return {m_vecColumns.data(), m_vecRows[static_cast<std::size_t>(row)], m_fStripeShare};
    }

    DenoiseStrength m_oStrength;
    int m_s32Rows = 0, m_s32Columns = 0;
    int m_s32Frames = 0;
    LastFrame m_oLast;

    Line m_vecEstimate;
    Line m_vecAge; ///< the picture's, and as much again, so that it moves without being copied
    std::ptrdiff_t m_nFirstAge = 0;
    float m_fBase = 0;        ///< a value in the middle of the first frame
    float m_fLevel = 0;       ///< of the frame above the estimate
    float m_fDeviation = 0;   ///< of the residual
    float m_fNoise = 0;       ///< of the estimate
    float m_fCorrelation = 0; ///< of the residuals of two frames
    float m_fRatio = 1;       ///< of its second octave to what white noise has there
    float m_fChanged = 1;     ///< share of the pixels that the last frame changed
    SceneShift m_oShift;
    bool m_bMoved = false; ///< whether the estimate was, for the last frame
    LostDetail m_oLost;    ///< of the estimate

    LineMeans m_oColumnMeans, m_oRowMeans;
    Line m_vecColumns, m_vecRows; ///< stripes of this frame
    float m_fStripeShare = 0;     ///< of them that the estimate takes over
    Line m_vecFixedColumns, m_vecFixedRows;

    // Memory for what lasts no longer than a frame.
    ShiftFinder m_oShiftFinder;
    PictureMover m_oMover;
    Line m_vecFrame;
    OctaveNoiseMeter m_oNoiseMeter;
    Line m_vecSorted, m_vecSegment, m_vecLines;
    std::vector<short> m_vecFixedLanes;
    std::vector<short> m_vecLastResiduals; ///< some lines
    Lanes m_oCoarse, m_oSums, m_oPicture, m_oRemoved;
    std::vector<Lanes> m_vecRings;
};

} // namespace velmo::camera
