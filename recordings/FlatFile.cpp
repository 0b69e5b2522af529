#include "recordings/FlatFile.h"

#include "recordings/GreyWriters.h"
#include "recordings/ImageFile.h"

#include "core/Exception.h"

namespace velmo::recordings {

std::vector<cv::Mat_<float>> readFlatPlanes(const std::string& path)
{
    constexpr std::size_t nPlanes = 3;
    const auto file = openImageFile(path);
    std::vector<cv::Mat_<float>> planes;
    cv::Mat plane;
    while (file->next(plane)) {
        if (plane.type() != CV_32F || planes.size() == nPlanes)
            VELMO_THROW(path + ": not a flat field, as 'thermal flat learn' writes one");
        planes.emplace_back(plane);
    }
    return planes;
}

void writeFlatPlanes(OutputFile file, const std::vector<cv::Mat_<float>>& planes)
{
    const auto writer = createNpy(std::move(file));
    for (const cv::Mat_<float>& plane : planes)
        writer->write(plane);
    writer->finish();
}

} // namespace velmo::recordings
