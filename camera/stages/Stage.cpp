#include "camera/stages/Stage.h"

namespace velmo::camera {

// Here, so that the table of the class stands in one place.
Stage::~Stage() = default;

} // namespace velmo::camera
