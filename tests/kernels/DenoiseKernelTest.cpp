// The loops of the denoiser.

#include "camera/stages/DenoiseKernel.h"
#include "tests/kernels/KernelTest.h"

#include <array>

using namespace velmo::camera;

namespace {

constexpr int s32Margin = 16;

float between(Random& random, float low, float high)
{
    return low + (high - low) * static_cast<float>(random(0, 1 << 20)) / (1 << 20);
}

/// Values around a level, some of them far away. Pixels before and behind the line belong to it.
std::vector<float> line(Random& random, int count, float level, float spread)
{
    std::vector<float> all(static_cast<std::size_t>(count + 2 * s32Margin));
    for (float& value : all)
        value = random.oneIn(9) ? between(random, 0, 65535) : between(random, level - spread, level + spread);
    return all;
}

std::vector<short> lanes(Random& random, int count, int reach)
{
    return random.values<short>(static_cast<std::size_t>(count) + 2 * s32Margin, -reach, reach);
}

struct Compared
{
    std::vector<u16> frame;
    std::vector<float> estimate, columns;
    float level, row, share, scale;
    int count;

    explicit Compared(Random& random, int round)
        : level(between(random, -300, 300)), row(between(random, -5, 5)), share(between(random, 0, 1)),
          scale(between(random, 0.01F, 40)), count(round)
    {
        const float middle = between(random, 0, 65535), spread = random.pick({1.0F, 20.0F, 3000.0F});
        estimate = line(random, count, middle, spread);
        columns = line(random, count, 0, 8);
        for (const float value : line(random, count, middle + level, spread))
            frame.push_back(static_cast<u16>(std::min(65535.0F, std::max(0.0F, value))));
    }
    Comparison of() const { return {frame.data(), estimate.data(), level}; }
    Stripes stripes() const { return {columns.data(), row, share}; }
};

template <class Function, class Run>
void add(std::vector<KernelCase>& all, const Forms<Function>& forms, Run run)
{
    all.push_back(kernel(forms, 150, run));
}

void addFrameLoops(std::vector<KernelCase>& all)
{
    add(all, sumDifferences, [](Random& random, int round, auto& form) {
        const Compared in(random, round);
        std::vector<int> sums(in.frame.size(), 5), inside(in.frame.size(), 7);
        const ClippedSum sum = form(in.of(), in.scale, sums.data(), inside.data(), in.count);
        return Left() << sum.sum << sum.inside << sums << inside;
    });
    add(all, halveComparison, [](Random& random, int round, auto& form) {
        const Compared upper(random, 2 * round), lower(random, 2 * round);
        Guarded<float> halved(static_cast<std::size_t>(round)), residual(static_cast<std::size_t>(round));
        form({upper.frame.data(), lower.frame.data()}, {upper.estimate.data(), lower.estimate.data()},
             halved.data(), residual.data(), round);
        return Left() << halved.all << residual.all;
    });
    add(all, takeResidual, [](Random& random, int round, auto& form) {
        const Compared in(random, round);
        Guarded<float> estimate(in.frame.size()), residual(in.frame.size());
        Guarded<short> coarse(in.frame.size());
        form(in.of(), in.stripes(), in.scale, estimate.data(), residual.data(), coarse.data(), in.count);
        return Left() << estimate.all << residual.all << coarse.all;
    });
    add(all, updateLine, [](Random& random, int round, auto& form) {
        const std::vector<short> sums = lanes(random, round, 175), squares = lanes(random, round, 6125);
        const std::vector<float> ages = line(random, round, 20, 19.5F),
                                 least = line(random, round, 0, 0.001F);
        const Compared in(random, round);
        std::vector<float> estimate = in.estimate, age = ages, explained = least;
        for (float& value : explained)
            value = std::min(1.0F, std::max(0.0F, value));
        const int changed =
            form(in.frame.data(), in.stripes(), in.level,
                 {sums.data() + s32Margin, squares.data() + s32Margin, explained.data(), 1 / in.scale, 0.07F},
                 estimate.data(), age.data(), in.count);
        return Left() << changed << estimate << age;
    });
    add(all, finishLine, [](Random& random, int round, auto& form) {
        const std::vector<short> removed = lanes(random, round, 500);
        const Compared in(random, round);
        Guarded<u16> out(in.frame.size());
        form(in.estimate.data(), removed.data(), {in.columns.data(), in.row, 0.07F, in.level}, out.data(),
             in.count);
        return Left() << out.all;
    });
}

void addFloatLoops(std::vector<KernelCase>& all)
{
    const auto three = [](Random& random, int count) {
        const float level = between(random, 0, 65535), spread = between(random, 0, 300);
        return std::array<std::vector<float>, 4>{
            line(random, count, level, spread), line(random, count, level, spread),
            line(random, count, level, spread), line(random, count, 0, 10)};
    };
    const auto written = [](int count, auto write) {
        Guarded<float> out(static_cast<std::size_t>(count));
        write(out.data());
        return Left() << out.all;
    };
    add(all, halve, [=](Random& random, int round, auto& form) {
        const auto in = three(random, 2 * round);
        return written(round, [&](float* out) { form(in[0].data(), in[1].data(), out, round); });
    });
    add(all, mixLines, [=](Random& random, int round, auto& form) {
        const auto in = three(random, round);
        const float* lines[] = {in[0].data(), in[1].data(), in[2].data(), in[3].data()};
        const float weights[] = {-0.07F, 0.9F, 0.2F, -0.03F};
        return written(round, [&](float* out) { form(lines, weights, out, round); });
    });
    const auto partOf = [](Random& random, int round) {
        return Part{round + random(2, 9), random(1, 5), random(1, 3), round};
    };
    add(all, sumGradients, [=](Random& random, int round, auto& form) {
        const Part part = partOf(random, round);
        const int size = static_cast<int>(part.stride) * (part.rows + 2);
        const auto in = three(random, size);
        GradientSums sums;
        sums.xy[round % 8] = 3;
        const std::ptrdiff_t at = part.stride + 1;
        form(in[0].data() + at, in[3].data() + at, between(random, -5, 5), 1 / 16.0F, part, sums);
        Left left;
        for (int i = 0; i < 8; ++i)
            left << sums.xx[i] << sums.xy[i] << sums.yy[i] << sums.xr[i] << sums.yr[i] << sums.rr[i];
        return left;
    });
    add(all, takeRest, [=](Random& random, int round, auto& form) {
        const auto in = three(random, round);
        return written(round,
                       [&](float* out) { form(in[0].data(), in[3].data(), in[1].data(), out, round); });
    });
    add(all, sumLine, [=](Random& random, int round, auto& form) {
        const auto in = three(random, round);
        std::vector<float> sums(8, 0.3F);
        form(in[0].data(), sums.data(), round);
        return Left() << sums;
    });
    add(all, sumGains, [=](Random& random, int round, auto& form) {
        const Part part = partOf(random, round);
        const int size = static_cast<int>(part.stride) * (part.rows + 2);
        const auto in = three(random, size);
        const auto rest = line(random, size, 0, 10);
        GainSums sums;
        sums.moves[round % 8] = 3;
        const std::ptrdiff_t at = part.stride + 1;
        form({&in[0][0] + at, &in[3][0] + at, &in[1][0] + at, &rest[0] + at, 0.7F, -0.4F, 0.2F, 0.05F}, part,
             sums);
        Left left;
        for (int i = 0; i < 8; ++i)
            left << sums.before[i] << sums.after[i] << sums.moves[i];
        return left;
    });
    add(all, explainByShift, [=](Random& random, int round, auto& form) {
        const Shift shift{between(random, -1, 1), between(random, -1, 1), between(random, 0.02F, 900),
                          random.oneIn(2) ? 0 : between(random, 0, 1)};
        const auto in = three(random, round);
        return written(round, [&](float* out) {
            form(in[0].data() + 1, in[1].data() + 1, in[2].data() + 1, shift, out, round);
        });
    });
    add(all, splitAcross, [=](Random& random, int round, auto& form) {
        const auto in = three(random, round);
        Guarded<float> low(static_cast<std::size_t>(round)), high(static_cast<std::size_t>(round));
        form(in[0].data() + 2, random(1, 2), low.data(), high.data(), round);
        return Left() << low.all << high.all;
    });
    add(all, splitDown, [=](Random& random, int round, auto& form) {
        auto in = three(random, round);
        Guarded<float> low(static_cast<std::size_t>(round));
        float* const kept = random.oneIn(2) ? low.data() : nullptr;
        form(in[0].data(), in[1].data(), in[2].data(), kept, in[3].data(), round);
        return Left() << low.all << in[3];
    });
    add(all, toLanes, [=](Random& random, int round, auto& form) {
        const auto in = three(random, round);
        Guarded<short> out(static_cast<std::size_t>(round));
        form(in[0].data(), 30000, 32 / 0.7F, out.data(), round);
        return Left() << out.all;
    });
}

void addLaneLoops(std::vector<KernelCase>& all)
{
    add(all, sumOfFive, [](Random& random, int round, auto& form) {
        const auto in = lanes(random, 5 * round, s32ResidualClip);
        Guarded<short> sums(static_cast<std::size_t>(round)), squares(static_cast<std::size_t>(round));
        const short* rows[5];
        for (int i = 0; i < 5; ++i)
            rows[i] = in.data() + i * round;
        form(rows, sums.data(), squares.data(), round);
        return Left() << sums.all << squares.all;
    });
    add(all, sumAcross, [](Random& random, int round, auto& form) {
        const auto in = lanes(random, round, random.pick({20, 200, 32767}));
        std::vector<int> sums(in.size(), 3), inside(in.size(), 4);
        form(in.data() + 4, 864, sums.data(), inside.data(), round);
        return Left() << sums << inside;
    });
    add(all, sumDown, [](Random& random, int round, auto& form) {
        const int reach = random.pick({20, 200, 32767});
        const auto in = lanes(random, round, reach), nine = lanes(random, round, reach);
        const ClippedSum sum = form(in.data(), nine.data(), 864, round);
        return Left() << sum.sum << sum.inside;
    });
    add(all, slideLine, [](Random& random, int round, auto& form) {
        const auto in = lanes(random, round, 32767);
        std::vector<short> sums(in.size(), 30000);
        form(in.data(), lanes(random, round, 32767).data(), sums.data(), round);
        return Left() << sums;
    });
    add(all, subtractStripes, [](Random& random, int round, auto& form) {
        auto picture = lanes(random, round, 32767);
        form(picture.data(), lanes(random, round, 500).data(), static_cast<short>(random(-500, 500)), round);
        return Left() << picture;
    });
}

/// Steps and noise, at any height of the 16-bit circle.
Lanes picture(Random& random, int rows, int columns)
{
    Lanes all;
    all.create(rows, columns);
    const int noise = random.pick({0, 30, 90, 300, 32767}), level = random(-32768, 32767),
              slope = random.pick({3, 90, 250, 520});
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < columns; ++c)
            all[r][c] = static_cast<short>(level + random(-noise, noise) + (c > columns / 2 ? 700 : 0) +
                                           slope * (r + c));
    return all;
}

Left& operator<<(Left& left, Lanes& lanes)
{
    for (int r = 0; r < lanes.rows; ++r)
        left << std::vector<short>(lanes[r], lanes[r] + lanes.columns);
    return left;
}

} // namespace

std::vector<KernelCase> denoiseKernels()
{
    std::vector<KernelCase> all;
    addFrameLoops(all);
    addFloatLoops(all);
    addLaneLoops(all);
    add(all, smoothOctave, [](Random& random, int round, auto& form) {
        const auto gate = [&] {
            const auto lower = static_cast<short>(random(1, 110));
            return Gate{lower, static_cast<short>(lower * 9 / 4 + 1)};
        };
        const Octave octave{1 << round % 4, 1 + round % 2, gate(), gate(), static_cast<short>(random(0, 4)),
                            random.oneIn(2)};
        const Lanes in = picture(random, random(1, 45), random(1, 70));
        Lanes smooth = in, removed = in;
        std::vector<Lanes> rings;
        form(smooth, octave, removed, rings);
        Left left;
        left << smooth << removed;
        return left;
    });
    return all;
}
