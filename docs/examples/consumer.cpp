// Smallest program on the library: a stream of two frames through the temporal filter.
#include "vision/imgproc/TemporalNoiseReduction.h"

int main()
{
    velmo::exp::vision::TemporalNoiseReduction<unsigned short> filter(16, 2048);
    cv::Mat_<unsigned short> frame(120, 160, static_cast<unsigned short>(30000));
    filter.process(frame);
    frame.setTo(30010); // ten counts of noise: the filter holds what it showed before
    filter.process(frame);
    return frame(60, 80) == 30000 ? 0 : 1;
}
