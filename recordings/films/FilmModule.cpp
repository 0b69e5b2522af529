// What the module is opened for: its one function.

#include "recordings/Films.h"
#include "recordings/films/FilmReader.h"
#include "recordings/films/FilmWriter.h"

extern "C" {
#include <libavutil/log.h>
}

namespace velmo::recordings {
namespace {

class LibavFilms : public Films
{
public:
    LibavFilms()
    {
        // What is wrong with a file is said in one line of our own.
        av_log_set_callback([](void*, int, const char*, va_list) {});
    }

    std::unique_ptr<ImageFile> open(ByteFile file, const std::string& name) const override
    {
        return openFilm(std::move(file), name);
    }

    std::unique_ptr<ImageWriter> create(OutputFile file, const FilmFormat& format) const override
    {
        return createFilm(std::move(file), format);
    }

    cv::Mat_<cv::Vec3b> readColours(ByteFile file, const std::string& name) const override
    {
        return recordings::readColours(std::move(file), name);
    }
};

} // namespace
} // namespace velmo::recordings

extern "C" __attribute__((visibility("default"))) const velmo::recordings::Films* vision_films_1_0()
{
    static const velmo::recordings::LibavFilms films;
    return &films;
}
