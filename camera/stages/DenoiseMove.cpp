#include "camera/stages/DenoiseMove.h"

#include "camera/stages/DenoiseKernel.h"

namespace velmo::camera {
namespace {

/// Of the pixels before, at, behind and two behind the whole part of a shift.
struct Cubic
{
    float weights[4];
    int whole;

    explicit Cubic(float shift) : whole(static_cast<int>(std::floor(shift)))
    {
        const float part = shift - static_cast<float>(whole);
        weights[0] = ((-0.5F * part + 1) * part - 0.5F) * part;
        weights[1] = (1.5F * part - 2.5F) * part * part + 1;
        weights[2] = ((-1.5F * part + 2) * part + 0.5F) * part;
        weights[3] = (0.5F * part - 0.5F) * part * part;
    }
};

} // namespace

void PictureMover::create(int columns)
{
    m_vecLine.resize(2 * static_cast<std::size_t>(columns) + 8);
}

void PictureMover::move(const float* in, int rows, int columns, int stride, float x, float y, float* out)
{
    const Cubic across(x), down(y);
    float* line = m_vecLine.data() + columns / 2 + 4;
    const int before = std::max(0, 1 - across.whole), behind = std::max(0, across.whole + 2);
    for (int r = 0; r < rows; ++r) {
        const float* lines[4];
        for (int i = 0; i < 4; ++i)
            lines[i] = in + std::ptrdiff_t{std::clamp(r + down.whole + i - 1, 0, rows - 1)} * stride;
        mixLines(lines, down.weights, line, columns);
        std::fill_n(line - before, before, line[0]);
        std::fill_n(line + columns, behind, line[columns - 1]);
        for (int i = 0; i < 4; ++i)
            lines[i] = line + across.whole + i - 1;
        mixLines(lines, across.weights, out + std::ptrdiff_t{r} * stride, columns);
    }
}

void LostDetail::move(float x, float y)
{
    // Half of what is two pixels wide and more goes at half a pixel.
    const auto taken = [](float shift) {
        const float part = shift - std::floor(shift);
        return 2 * part * (1 - part);
    };
    m_fX += taken(x);
    m_fY += taken(y);
}

void LostDetail::renew(float share)
{
    m_fX *= 1 - share;
    m_fY *= 1 - share;
}

float LostDetail::energyOf(float moves)
{
    constexpr float fMeasured = 1.2F; // second differences miss some of what is wider
    return fMeasured * square(moves / (1 + moves));
}

float keptNoise(float shift)
{
    float sum = 0;
    for (const float weight : Cubic(shift).weights)
        sum += square(weight);
    return sum;
}

} // namespace velmo::camera
