#include "vision/imgproc/ConnectedComponent.h"

#include "bench/Bench.h"
#include "vision/kernels/ConnectedComponentKernel.h"

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <memory>

using namespace velmo::exp::vision;

namespace {

/// A blob with as many points as the size has pixels, line by line as a labelling pass finds them.
struct Blob
{
    explicit Blob(cv::Size size) : points(pointsOf(size)), component(points, 1) {}

    static std::vector<cv::Point> pointsOf(cv::Size size)
    {
        std::vector<cv::Point> points;
        points.reserve(static_cast<std::size_t>(size.area()));
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                points.emplace_back(100 + x, 40 + y);
        return points;
    }

    std::vector<cv::Point> points;
    ConnectedComponent component;
    cv::Rect box;
    cv::Point2d centre;
    PointExtents extents{};
    SquaredReach reach{};
    double measure = 0;
    std::shared_ptr<cv::PCA> components;
};

const std::vector<cv::Size> blobSizes = {{400, 250}};

Job jobOn(const Blob& blob)
{
    return Job(sizeof(cv::Point) * blob.points.size(), blob.points.size(), "point");
}

Job boundingBox(cv::Size size)
{
    const auto blob = std::make_shared<Blob>(size);
    const auto plain = [blob] { blob->extents = extentsOf.plain(blob->points.data(), blob->points.size()); };
    plain();
    Job job = jobOn(*blob);
    job.check(blob->component.getBoundingBox() == cv::boundingRect(blob->points));
    job.check(blob->component.getBoundingBox().br() ==
              cv::Point(blob->extents.maxX + 1, blob->extents.maxY + 1));
    job.ours([blob] { blob->box = blob->component.getBoundingBox(); });
    job.plain(plain);
    job.peer("boundingRect", [blob] { blob->box = cv::boundingRect(blob->points); });
    job.atLeast(2.8, "plain").atLeast(1.7, "boundingRect");
    return job;
}

Job centre(cv::Size size)
{
    const auto blob = std::make_shared<Blob>(size);
    const auto plain = [blob] { blob->centre = sumOf.plain(blob->points.data(), blob->points.size()); };
    plain();
    Job job = jobOn(*blob);
    job.check(blob->component.getCenterOfGravity() == blob->centre / static_cast<double>(size.area()));
    job.ours([blob] { blob->centre = blob->component.getCenterOfGravity(); });
    job.plain(plain);
    // Takes the points for an outline: what people use for the centre of a contour.
    job.peer("moments", [blob] { blob->measure = cv::moments(blob->points).m10; });
    job.atLeast(5, "plain").atLeast(30, "moments");
    return job;
}

Job elongation(cv::Size size)
{
    const auto blob = std::make_shared<Blob>(size);
    const auto plain = [blob] {
        const cv::Point2d sum = sumOf.plain(blob->points.data(), blob->points.size());
        const auto count = static_cast<double>(blob->points.size());
        blob->reach = squaredReachOf.plain(blob->points.data(), blob->points.size(),
                                           {cvRound(sum.x / count), cvRound(sum.y / count)});
    };
    plain();
    Job job = jobOn(*blob);
    job.check(blob->component.getElongation() ==
              static_cast<double>(blob->reach.y) / static_cast<double>(blob->reach.x));
    job.ours([blob] { blob->measure = blob->component.getElongation(); });
    job.plain(plain);
    return job;
}

Job principalComponentsJob(cv::Size size)
{
    const auto blob = std::make_shared<Blob>(size);
    const auto copied = [blob] {
        const std::vector<cv::Point> points = blob->component.getPoints();
        cv::Mat_<float> data;
        for (const cv::Point& point : points)
            data.push_back(
                cv::Mat_<float>(cv::Matx12f(static_cast<float>(point.y), static_cast<float>(point.x))));
        blob->components =
            std::make_shared<cv::PCA>(data, cv::Mat(), static_cast<int>(cv::PCA::DATA_AS_ROW), 2);
    };
    copied();
    Job job = jobOn(*blob);
    job.check(cv::norm(blob->component.getPCA()->eigenvalues, blob->components->eigenvalues) == 0);
    job.ours([blob] { blob->components = blob->component.getPCA(); });
    job.peer("row by row", copied);
    return job;
}

const Registration boxEntry("blob bounding box", boundingBox, blobSizes);
const Registration centreEntry("blob centre", centre, blobSizes);
const Registration elongationEntry("blob elongation", elongation, blobSizes);
const Registration componentsEntry("blob components", principalComponentsJob, blobSizes);

} // namespace
