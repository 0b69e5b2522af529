#include "vision/kernels/BadPixelKernel.h"

#include "tests/kernels/KernelTest.h"

using namespace velmo::exp::vision;

/// A populated core with a few outliers. Those near it leave fewer values than pixels, those far away more.
const auto population = [](Random& random, cv::Size size) {
    const int mid = random.oneIn(3) ? random(-50, 50) : random(-32768, 32767);
    const int width = 1 + std::abs(mid) / random.pick({30, 300, 1000}), far = random.pick({300, 1200, 40000});
    cv::Mat_<short> frame = random.frame<short>(size, 0, 0);
    for (short& value : frame) {
        const int offset =
            random.oneIn(50) ? random(-far, far) : (random(-width, width) + random(-width, width)) / 2;
        value = cv::saturate_cast<short>(mid + offset);
    }
    return frame;
};

std::vector<KernelCase> badPixelKernels()
{
    std::vector<KernelCase> all;
    all.push_back(kernel(flagSpread, 3000, [](Random& random, int round, auto& form) {
        const cv::Mat_<short> frame = population(
            random, round % 500 == 0 ? cv::Size(640, 300) : cv::Size(random(1, 120), random(1, 40)));
        cv::Mat_<int> map(frame.size() + cv::Size(3, 3), 1);
        cv::Mat_<int> part = map(cv::Rect({1, 2}, frame.size()));
        const unsigned long count = form(frame, part, static_cast<unsigned long>(random(0, 40)));
        return Left() << count << part;
    }));
    all.push_back(kernel(flagFallen, 300, [](Random& random, int round, auto& form) {
        const auto count = static_cast<std::size_t>(round / 3);
        const int reach = random.pick({1, 32767});
        const auto before = random.values<short>(count, -reach - 1, reach),
                   after = random.values<short>(count, -reach - 1, reach);
        Guarded<int> flags(count);
        form(before.data(), after.data(), flags.data(), round / 3);
        return Left() << flags.all;
    }));
    all.push_back(kernel(countBad, 300, [](Random& random, int round, auto& form) {
        const auto count = static_cast<std::size_t>(round / 3);
        const auto flags = random.values<int>(count, -1, random.pick({1, 2147483647}));
        Guarded<unsigned int> columns(count);
        const unsigned int bad = form(flags.data(), columns.data(), round / 3);
        return Left() << bad << columns.all;
    }));
    all.push_back(kernel(findBad, 300, [](Random& random, int round, auto& form) {
        auto flags = random.values<int>(static_cast<std::size_t>(round / 3), -1, 1);
        const int good = random.pick({1, 3, 40});
        for (int& flag : flags)
            flag = random(0, good) == 0 ? flag : 0;
        Guarded<int> columns(flags.size());
        const int bad = form(flags.data(), columns.data(), round / 3);
        std::fill(columns.data() + bad, columns.data() + flags.size(), 0); // may hold anything
        return Left() << bad << columns.all;
    }));
    return all;
}
