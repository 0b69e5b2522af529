#pragma once

#include "recordings/Films.h"

namespace velmo::recordings {

/// See Films::create.
std::unique_ptr<ImageWriter> createFilm(OutputFile file, const FilmFormat& format);

} // namespace velmo::recordings
