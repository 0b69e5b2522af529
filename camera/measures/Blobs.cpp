#include "camera/measures/Blobs.h"

#include "core/Exception.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmo::camera {
namespace {

using exp::vision::ConnectedComponent;

constexpr double nothing = std::numeric_limits<double>::quiet_NaN();
constexpr double pi = 3.14159265358979323846;

std::vector<ConnectedComponent> label(const cv::Mat& members)
{
    cv::Mat_<int> labels;
    const int count = cv::connectedComponents(members, labels, 8, CV_32S);
    std::vector<ConnectedComponent> components;
    for (int i = 1; i < count; ++i) // 0 is what belongs to none
        components.emplace_back(i);
    for (int y = 0; y < labels.rows; ++y)
        for (int x = 0; x < labels.cols; ++x)
            if (const int found = labels(y, x))
                components[static_cast<std::size_t>(found) - 1].addPoint({x, y});
    return components;
}

void measureAxes(Blob& blob)
{
    blob.length = blob.width = blob.angle = nothing;
    const auto axes = blob.component.getPCA();
    if (axes->eigenvalues.total() < 2) // a single pixel
        return;
    // The deviation of an even ellipse along an axis is a quarter of the whole axis.
    const auto fullAxis = [&](int i) { return 4 * std::sqrt(std::max(0.F, axes->eigenvalues.at<float>(i))); };
    blob.length = fullAxis(0);
    blob.width = fullAxis(1);
    // Rows are (y, x) and y points down; which end of an axis it names is chance.
    const double right = axes->eigenvectors.at<float>(0, 1), up = -axes->eigenvectors.at<float>(0, 0);
    blob.angle = std::atan(up / right) * 180 / pi;
    blob.angle += 0.0; // no minus before a zero
    if (blob.angle <= -90)
        blob.angle = 90;
}

void measureValues(Blob& blob, const Frame& frame, const Thermometer& thermometer)
{
    double sum = 0;
    std::size_t count = 0;
    blob.low = std::numeric_limits<unsigned short>::max();
    blob.high = 0;
    for (const cv::Point& point : blob.component.getPoints()) {
        const unsigned short value = frame(point);
        blob.low = std::min(blob.low, value);
        blob.high = std::max(blob.high, value);
        if (const double number = thermometer.read(value); std::isfinite(number)) {
            sum += number;
            ++count;
        }
    }
    blob.mean = count > 0 ? sum / static_cast<double>(count) : thermometer.read(blob.low);
}

Blob measure(ConnectedComponent component, const Frame& frame, const Thermometer& thermometer)
{
    Blob blob;
    blob.component = std::move(component);
    blob.centre = blob.component.getCenterOfGravity();
    blob.box = blob.component.getBoundingBox();
    blob.elongation = blob.component.getElongation();
    measureAxes(blob);
    measureValues(blob, frame, thermometer);
    return blob;
}

} // namespace

std::optional<BlobRule> BlobRule::from(const Settings& settings, const Thermometer& thermometer)
{
    const bool above = settings.text("blobs/above") != "off";
    if (above && settings.text("blobs/below") != "off")
        VELMO_THROW("blobs/above and blobs/below: one of them at a time");
    const std::string path = above ? "blobs/above" : "blobs/below", text = settings.text(path);
    if (text == "off")
        return std::nullopt;
    const auto minPixels = static_cast<std::size_t>(settings.numbers("blobs/min-size")[0]);
    // The rule takes a value that is on neither side.
    return above
               ? BlobRule{thermometer.valueOf(text, Thermometer::Edge::Above, path) - 1.0, true, minPixels}
               : BlobRule{thermometer.valueOf(text, Thermometer::Edge::Below, path) + 1.0, false, minPixels};
}

std::vector<Blob> findBlobs(const Frame& frame, const BlobRule& rule, const Thermometer& thermometer)
{
    cv::Mat members;
    cv::compare(frame, rule.value, members, rule.above ? cv::CMP_GT : cv::CMP_LT);
    std::vector<Blob> blobs;
    for (ConnectedComponent& component : label(members)) {
        if (component.getNrOfPoints() < rule.minPixels)
            continue;
        component.setLabel(static_cast<unsigned>(blobs.size()) + 1);
        blobs.push_back(measure(std::move(component), frame, thermometer));
    }
    return blobs;
}

} // namespace velmo::camera
