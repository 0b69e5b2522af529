#pragma once

#include <opencv2/core.hpp>

/// A thermal scene as a core delivers it: a gradient, warm objects, column stripes and noise of 5 counts,
/// values of about 7,800 to 9,900. The same seed gives the same frame; another one other noise on the same
/// scene.
cv::Mat_<unsigned short> scene(cv::Size size, unsigned seed = 1);

/// Every 16-bit value equally likely: the worst case of everything that looks up tables.
cv::Mat_<unsigned short> noise(cv::Size size, unsigned seed = 1);

/// The same bits read as signed values.
cv::Mat_<short> asSigned(const cv::Mat_<unsigned short>& frame);
