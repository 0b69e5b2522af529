#include "camera/stages/DownSizeStage.h"

#include "camera/settings/Parse.h"
#include "camera/stages/SignedStage.h"

#include "core/Exception.h"
#include "vision/imgproc/DownSize.h"

namespace velmo::camera {
namespace {

using exp::vision::DownSize;

class DownSizeStage : public SignedStage
{
public:
    explicit DownSizeStage(cv::Size size) : SignedStage("downsize " + sizeText(size)), m_oSize(size) {}

private:
    cv::Size outSize(cv::Size inSize) const override
    {
        if (inSize != cv::Size(240, 180))
            VELMO_THROW(name() + ": takes frames of 240x180, these are " + sizeText(inSize));
        return m_oSize;
    }

    void filter(cv::Mat_<short>& in, cv::Mat_<short>& out) override
    {
        if (m_oSize.width == 160)
            DownSize::resize240To160(in, out);
        else
            DownSize::resize240To120(in, out);
    }

    cv::Size m_oSize;
};

} // namespace

std::unique_ptr<Stage> makeDownSizeStage(const Settings& settings)
{
    const std::string size = settings.text("frame/downsize");
    if (size == "off")
        return nullptr;
    return std::make_unique<DownSizeStage>(parseSize(size, "frame/downsize"));
}

} // namespace velmo::camera
