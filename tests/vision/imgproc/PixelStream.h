#pragma once

#include <opencv2/core.hpp>

#include <vector>

using Values = std::vector<int>;

/// A stream of 1 x 1 frames through a filter that works in place: the output of each input in turn.
template <template <class> class Filter, class T>
Values outputsOf(Filter<T>& filter, const Values& inputs)
{
    Values outputs;
    for (const int input : inputs) {
        cv::Mat_<T> frame(1, 1, static_cast<T>(input));
        filter.process(frame);
        outputs.push_back(frame(0, 0));
    }
    return outputs;
}
