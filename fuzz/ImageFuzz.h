#pragma once

#include "fuzz/Fuzz.h"

#include "recordings/ByteFile.h"
#include "recordings/ImageFile.h"

/// What a fuzzing engine made up, as the file that readers take.
inline velmo::recordings::ByteFile fileOf(const std::uint8_t* data, std::size_t size)
{
    // Read only: the bytes stay as they are.
    velmo::recordings::ByteFile file(fmemopen(const_cast<std::uint8_t*>(data), size, "rb"));
    require(bool(file));
    return file;
}

/// Reads every image by `open`. Refusing is right; whatever is taken has to be what an image file promises.
template <class Open>
int readAll(const std::uint8_t* data, std::size_t size, Open open)
{
    if (size == 0)
        return 0;
    return unlessRefused([&] {
        const auto images = open(fileOf(data, size), "file");
        const std::optional<std::size_t> count = images->count();
        images->unit();
        std::size_t read = 0;
        for (cv::Mat image; images->next(image); ++read)
            require(!image.empty() && image.type() == (images->holdsDegrees() ? CV_32FC1 : CV_16UC1));
        require(!count || *count == read);
    });
}
