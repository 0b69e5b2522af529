#include "camera/measures/BlobPicture.h"

#include "camera/drawing/Enlarge.h"
#include "camera/drawing/MarkColour.h"
#include "camera/drawing/Text.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>

namespace velmo::camera {
namespace {

using exp::vision::ConnectedComponent;

constexpr double tint = 0.35; ///< how much of a blob's colour covers its pixels

/// The colour that a drawing begins with from this state of the generator.
cv::Vec3b colourFrom(std::uint64_t state)
{
    cv::RNG random(state);
    cv::Vec3b colour;
    for (int channel = 0; channel < 3; ++channel)
        colour[channel] = static_cast<unsigned char>(random.next());
    return colour;
}

/// A state from which a drawing begins with about the wanted colour.
std::uint64_t stateFor(unsigned label)
{
    constexpr int close = 48;
    const cv::Vec3b wanted = markColour(label);
    std::uint64_t state = label + 1;
    // One of some fifty does.
    while (cv::norm(colourFrom(state), wanted, cv::NORM_INF) > close)
        state += 0x9E3779B97F4A7C15;
    return state;
}

/// Leaves OpenCV's generator as it was.
class GeneratorKept
{
public:
    GeneratorKept() : m_oKept(cv::theRNG()) {}
    ~GeneratorKept() { cv::theRNG() = m_oKept; }
    GeneratorKept(const GeneratorKept&) = delete;
    GeneratorKept& operator=(const GeneratorKept&) = delete;

private:
    cv::RNG m_oKept;
};

/// One of the drawing operations for one blob, in the colour of its label.
template <class Draw>
void drawInItsColour(const ConnectedComponent& component, Draw draw)
{
    cv::theRNG().state = stateFor(component.getLabel());
    draw(std::map<int, ConnectedComponent>{{1, component}});
}

Picture tinted(const Picture& picture, const std::vector<Blob>& blobs)
{
    Picture covered = picture.clone();
    for (const Blob& blob : blobs)
        drawInItsColour(blob.component, [&](const auto& one) {
            ConnectedComponent::drawComponents(covered, one, false, 0, false);
        });
    cv::addWeighted(covered, tint, picture, 1 - tint, 0, covered);
    return covered;
}

void drawLines(Picture& picture, const ConnectedComponent& component)
{
    drawInItsColour(component,
                    [&](const auto& one) { ConnectedComponent::drawComponentHulls(picture, one, false); });
    drawInItsColour(component, [&](const auto& one) {
        ConnectedComponent::drawPrincipalComponents(picture, one, false);
    });
}

void drawPath(Picture& picture, const std::vector<cv::Point2d>& path, int scale, const cv::Scalar& colour)
{
    // The middle of a pixel that has become a square.
    const auto place = [&](const cv::Point2d& centre) {
        return cv::Point(cvRound((centre.x + 0.5) * scale - 0.5), cvRound((centre.y + 0.5) * scale - 0.5));
    };
    for (std::size_t i = 1; i < path.size(); ++i)
        cv::line(picture, place(path[i - 1]), place(path[i]), colour, 1, cv::LINE_AA);
}

/// Above the box, or below it where there is no room above.
void drawLabel(Picture& picture, const Blob& blob, int scale, const cv::Scalar& colour)
{
    const std::string text = std::to_string(blob.component.getLabel());
    const int above = blob.box.y * scale - s32TextHeight - 3;
    const int y =
        above >= 0 ? above : std::min(blob.box.br().y * scale + 3, picture.rows - s32TextHeight - 1);
    const int x = std::clamp(blob.box.x * scale, 0, std::max(0, picture.cols - textWidth(text)));
    drawText(picture, text, {x, y}, colour);
}

} // namespace

Picture withBlobs(const Picture& picture, const std::vector<Blob>& blobs, const BlobTracker& tracker,
                  int scale)
{
    const GeneratorKept kept;
    Picture drawn = tinted(picture, blobs);
    for (const Blob& blob : blobs)
        drawLines(drawn, blob.component);
    drawn = enlarged(drawn, scale);
    for (const Blob& blob : blobs) {
        const cv::Scalar colour = colourFrom(stateFor(blob.component.getLabel()));
        drawPath(drawn, tracker.path(blob.component.getLabel()), scale, colour);
        drawLabel(drawn, blob, scale, colour);
    }
    return drawn;
}

} // namespace velmo::camera
