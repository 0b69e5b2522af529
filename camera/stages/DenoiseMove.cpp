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

/// A line as it is seen from `across`: its inner pixels by the loop, those that see beyond its ends one by
/// one.
void moveAcross(const float* in, const Cubic& across, float* out, int columns)
{
    const int first = std::clamp(1 - across.whole, 0, columns),
              last = std::clamp(columns - across.whole - 2, first, columns);
    const float* from[4];
    if (first < last) {
        for (int i = 0; i < 4; ++i)
            from[i] = in + std::ptrdiff_t{first + across.whole + i - 1};
        mixLines(from, across.weights, out + first, last - first);
    }
    const auto moveEnd = [&](int c) {
        float pixels[4];
        for (int i = 0; i < 4; ++i) {
            pixels[i] = in[std::clamp(c + across.whole + i - 1, 0, columns - 1)];
            from[i] = pixels + i;
        }
        mixLines(from, across.weights, out + c, 1);
    };
    for (int c = 0; c < first; ++c)
        moveEnd(c);
    for (int c = last; c < columns; ++c)
        moveEnd(c);
}

} // namespace

void PictureMover::create(int columns)
{
    m_vecLines.resize(4 * static_cast<std::size_t>(columns));
}

void PictureMover::move(const float* in, int rows, int columns, int stride, float x, float y, float* out)
{
    const Cubic across(x), down(y);
    const bool isUp = down.whole < 0; // rows that were read before they are written
    const auto lineOf = [&](int row) { return m_vecLines.data() + std::ptrdiff_t{row % 4} * columns; };
    int known = isUp ? rows : -1; // the last row that was moved across
    for (int i = 0; i < rows; ++i) {
        const int r = isUp ? rows - 1 - i : i;
        const auto source = [&](int line) { return std::clamp(r + down.whole + line - 1, 0, rows - 1); };
        const int first = isUp ? std::min(known - 1, source(3)) : std::max(known + 1, source(0)),
                  count = isUp ? first - source(0) + 1 : source(3) - first + 1;
        for (int j = 0; j < count; ++j) {
            known = isUp ? first - j : first + j;
            moveAcross(in + std::ptrdiff_t{known} * stride, across, lineOf(known), columns);
        }
        const float* lines[4] = {lineOf(source(0)), lineOf(source(1)), lineOf(source(2)), lineOf(source(3))};
        mixLines(lines, down.weights, out + std::ptrdiff_t{r} * stride, columns);
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
