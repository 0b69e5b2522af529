// Files of settings, XML or INI.

#include "camera/Settings.h"
#include "fuzz/Fuzz.h"

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

std::vector<std::string> linesOf(const std::string& file)
{
    std::istringstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

/// The sections, and in them what is not as it is if nothing is said: the rest would be most of the work.
std::string chosen(const std::string& written)
{
    static const std::vector<std::string> usual = linesOf(velmo::camera::Settings().ini());
    const std::vector<std::string> lines = linesOf(written);
    std::string all;
    for (std::size_t n = 0; n < lines.size(); ++n)
        if (n >= usual.size() || lines[n] != usual[n] || lines[n].find('[') == 0)
            all += lines[n] + '\n';
    return all;
}

} // namespace

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
    std::istringstream again(chosen(written));
    require(Settings::read(again).ini() == written);
    return 0;
}
