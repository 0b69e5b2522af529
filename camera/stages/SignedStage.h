// Not installed.
#pragma once

#include "camera/stages/Stage.h"

#include <utility>

namespace velmo::camera {

/// A stage made of a filter for signed values. A value v is shown to it as v - 32768: unlike a cast that
/// keeps the order of values above 32767, and full scale stays the one saturated value.
class SignedStage : public Stage
{
public:
    explicit SignedStage(std::string name) : m_strName(std::move(name)) {}

    std::string name() const override { return m_strName; }

    void apply(Frame& frame) override
    {
        m_oOut.create(outSize(frame.size()));
        cv::Mat_<short> in = toSigned(frame);
        cv::Mat_<short> out = asSigned(m_oOut);
        filter(in, out);
        toSigned(m_oOut); // its own inverse
        frame = m_oOut;
    }

private:
    virtual cv::Size outSize(cv::Size inSize) const { return inSize; }
    virtual void filter(cv::Mat_<short>& in, cv::Mat_<short>& out) = 0;

    static cv::Mat_<short> asSigned(Frame& frame)
    {
        return cv::Mat_<short>(frame.rows, frame.cols, reinterpret_cast<short*>(frame.data), frame.step);
    }

    /// In the same memory.
    static cv::Mat_<short> toSigned(Frame& frame)
    {
        for (int r = 0; r < frame.rows; ++r) {
            unsigned short* row = frame[r];
            for (int c = 0; c < frame.cols; ++c)
                row[c] ^= 0x8000;
        }
        return asSigned(frame);
    }

    std::string m_strName;
    Frame m_oOut;
};

} // namespace velmo::camera
