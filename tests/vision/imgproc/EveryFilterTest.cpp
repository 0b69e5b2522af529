// What every filter promises: views, output in place, overlap, copies, moves, other sizes.

#include "tests/Support.h"
#include "tests/vision/imgproc/Filters.h"

struct EveryFilter : testing::TestWithParam<FilterKind>
{
    /// Sizes that it takes: rows and columns alone, and such that pairs and fours of pixels span rows.
    std::vector<cv::Size> sizes() const
    {
        if (!kind.fixed.empty())
            return {kind.fixed};
        std::vector<cv::Size> all;
        for (const cv::Size size : {cv::Size(1, 1), {1, 12}, {12, 1}, {37, 11}, {5, 4}, {33, 2}, {36, 12}})
            if (size.area() % kind.multiple == 0)
                all.push_back(size);
        return all;
    }

    cv::Mat frame(cv::Size size)
    {
        cv::Mat frame(size, kind.type);
        random.fill(frame, cv::RNG::UNIFORM, 0, 101);
        return frame;
    }

    cv::Mat result(std::any& filter, const cv::Mat& in) const
    {
        cv::Mat out;
        kind.process(filter, in.clone(), out);
        return out.clone();
    }

    const FilterKind kind = GetParam();
    cv::RNG random{7};
};

TEST_P(EveryFilter, ReadsAndWritesViewsAndNothingAroundThem)
{
    for (const cv::Size size : sizes()) {
        std::any straight = kind.filter, views = kind.filter;
        for (int n = 0; n < 4; ++n) {
            const cv::Mat large = frame(size + cv::Size(5, 2));
            const cv::Rect place({2, 1}, size);
            const cv::Mat expected = result(straight, large(place));

            cv::Mat canvas(expected.size() + cv::Size(5, 2), expected.type(), cv::Scalar::all(99));
            const cv::Rect target({2, 1}, expected.size());
            cv::Mat out = canvas(target);
            kind.process(views, large(place), out);
            ASSERT_EQ(out.data, canvas(target).data) << "not in place, " << size;
            ASSERT_TRUE(same(out, expected)) << size;
            out.setTo(cv::Scalar::all(99));
            ASSERT_TRUE(same(canvas, cv::Mat(canvas.size(), canvas.type(), cv::Scalar::all(99)))) << size;
        }
    }
}

// Matrices made over one buffer, as pools of frames have them: in steps of their own, or in the same steps,
// which is what regions of one image are like.
TEST_P(EveryFilter, GivesTheResultOfTheUntouchedInputWhereverTheOutputLies)
{
    if (kind.bInPlace)
        return;
    for (const cv::Size size : sizes()) {
        const cv::Mat first = frame(size), next = frame(size);
        std::any straight = kind.filter;
        result(straight, first);
        const cv::Mat expected = result(straight, next);
        const std::size_t inRow = next.cols * next.elemSize(), outRow = expected.cols * expected.elemSize();
        const std::size_t shared = (std::max(inRow, outRow) + 12) / 2 * 2;
        const std::size_t bytes = shared * (std::max(next.rows, expected.rows) + 2);
        for (const auto& [inStep, outStep] :
             {std::pair(inRow, outRow), {shared, shared}, {shared, outRow}, {inRow, shared}})
            for (const std::size_t shift :
                 {std::size_t{0}, std::size_t{2}, std::size_t{6}, inStep, inStep + 6, outStep, bytes / 4 * 2})
                for (const std::ptrdiff_t sign : {1, -1}) {
                    const std::ptrdiff_t offset = sign * static_cast<std::ptrdiff_t>(shift);
                    std::vector<std::uint16_t> buffer(3 * bytes / 2 + 3, 0x6363);
                    unsigned char* const begin = reinterpret_cast<unsigned char*>(buffer.data()) + bytes;
                    cv::Mat in(size, kind.type, begin, inStep);
                    next.copyTo(in);
                    cv::Mat out(expected.size(), expected.type(), begin + offset, outStep);
                    std::any filter = kind.filter;
                    result(filter, first);
                    kind.process(filter, in, out);
                    ASSERT_EQ(out.data, begin + offset);
                    ASSERT_TRUE(same(out, expected)) << size << inStep << ' ' << outStep << ' ' << offset;
                }
    }
}

TEST_P(EveryFilter, IsAsNewAfterAMoveAndItsHeirsAndCopiesGoOnEachForItself)
{
    const cv::Size size = sizes().back();
    const cv::Mat frames[] = {frame(size), frame(size), frame(size)};
    std::any original = kind.filter, fresh = kind.filter, untouched = kind.filter;
    result(original, frames[0]);
    result(untouched, frames[0]);
    const cv::Mat next = result(untouched, frames[1]), first = result(fresh, frames[1]);

    std::any copy = original, assigned = kind.filter, second = kind.filter;
    result(assigned, frames[2]);
    kind.copy(assigned, original);
    kind.copy(assigned, assigned);
    std::any heir = kind.moved(original);
    EXPECT_TRUE(same(result(original, frames[1]), first));
    EXPECT_TRUE(same(result(original, frames[0]), result(fresh, frames[0])));
    result(second, frames[1]);
    kind.move(second, heir);
    EXPECT_TRUE(same(result(heir, frames[1]), first));
    for (std::any* each : {&second, &copy, &assigned})
        EXPECT_TRUE(same(result(*each, frames[1]), next));
}

TEST_P(EveryFilter, StartsAnewWithAnotherSizeAndTakesEmptyFrames)
{
    const std::vector<cv::Size> all = sizes();
    std::any filter = kind.filter;
    for (const cv::Size size : all) {
        const cv::Mat in = frame(size);
        std::any fresh = kind.filter;
        EXPECT_TRUE(same(result(filter, in), result(fresh, in))) << size;
        result(filter, in);
    }
    if (!kind.fixed.empty())
        return;
    for (const cv::Size size : {cv::Size(5, 0), cv::Size(0, 5), cv::Size(0, 0)})
        EXPECT_TRUE(result(filter, cv::Mat(size, kind.type)).empty()) << size;
}

INSTANTIATE_TEST_SUITE_P(Filters, EveryFilter, testing::ValuesIn(everyFilter()),
                         [](const auto& kind) { return kind.param.name; });
