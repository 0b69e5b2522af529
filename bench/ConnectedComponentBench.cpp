#include "vision/imgproc/ConnectedComponent.h"

#include "bench/Bench.h"
#include "vision/kernels/ConnectedComponentKernel.h"

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include <memory>

using namespace velmo::exp::vision;

namespace {

/// A blob with as many points as the size has pixels, line by line as a labelling pass finds them.
struct Blob
{
    explicit Blob(cv::Size size)
    {
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                points.emplace_back(100 + x, 40 + y);
    }

    std::vector<cv::Point> points;
    cv::Rect box;
    double moment = 0;
};

const std::vector<cv::Size> blobSizes = {{400, 250}};

Job jobOn(const Blob& blob)
{
    return Job(sizeof(cv::Point) * blob.points.size(), blob.points.size(), "point");
}

Job boundingBox(cv::Size size)
{
    const auto blob = std::make_shared<Blob>(size);
    Job job = jobOn(*blob);
    job.loop(extentsOf, [blob](auto& form) {
        benchmark::DoNotOptimize(form(blob->points.data(), blob->points.size()));
    });
    job.peer("boundingRect", [blob] { blob->box = cv::boundingRect(blob->points); });
    return job.atLeast(2.8, "plain").atLeast(1.7, "boundingRect").instructions(1.63);
}

Job centre(cv::Size size)
{
    const auto blob = std::make_shared<Blob>(size);
    Job job = jobOn(*blob);
    job.loop(sumOf, [blob](auto& form) {
        benchmark::DoNotOptimize(form(blob->points.data(), blob->points.size()));
    });
    // Takes the points for an outline: what people use for the centre of a contour.
    job.peer("moments", [blob] { blob->moment = cv::moments(blob->points).m10; });
    return job.atLeast(5, "plain").atLeast(30, "moments").instructions(2);
}

Job reach(cv::Size size)
{
    const auto blob = std::make_shared<Blob>(size);
    return jobOn(*blob).loop(squaredReachOf, [blob](auto& form) {
        benchmark::DoNotOptimize(form(blob->points.data(), blob->points.size(), {300, 165}));
    });
}

Job principalComponentsJob(cv::Size size)
{
    const auto blob = std::make_shared<Blob>(size);
    const auto component = std::make_shared<ConnectedComponent>(blob->points, 1);
    const auto copied = [component] {
        cv::Mat_<float> data;
        for (const cv::Point& point : component->getPoints())
            data.push_back(
                cv::Mat_<float>(cv::Matx12f(static_cast<float>(point.y), static_cast<float>(point.x))));
        return std::make_shared<cv::PCA>(data, cv::Mat(), static_cast<int>(cv::PCA::DATA_AS_ROW), 2);
    };
    Job job = jobOn(*blob);
    job.check(cv::norm(component->getPCA()->eigenvalues, copied()->eigenvalues) == 0);
    job.ours([component] { component->getPCA(); });
    return job.peer("row by row", copied);
}

const Registration boxEntry("blob bounding box", boundingBox, blobSizes);
const Registration centreEntry("blob centre", centre, blobSizes);
const Registration reachEntry("blob reach", reach, blobSizes);
const Registration componentsEntry("blob components", principalComponentsJob, blobSizes);

} // namespace
