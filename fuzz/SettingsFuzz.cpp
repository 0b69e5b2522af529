// Files of settings, XML or INI.

#include "camera/Settings.h"

#include "core/Exception.h"

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using velmo::camera::Settings;
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    std::string written;
    try {
        written = Settings::read(in).ini();
    } catch (const velmo::exp::Exception&) {
        return 0;
    } catch (const std::logic_error&) { // an element without its name or type
        return 0;
    }
    // What is written is what was read; none of it is refused.
    std::istringstream again(written);
    if (Settings::read(again).ini() != written)
        std::abort();
    return 0;
}
