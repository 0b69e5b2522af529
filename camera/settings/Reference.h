#pragma once

#include "core/Export.h"

#include <string>

namespace velmo::camera {

/// The page docs/settings.md: every setting there is, in Markdown.
VELMO_API std::string settingsReference();

} // namespace velmo::camera
