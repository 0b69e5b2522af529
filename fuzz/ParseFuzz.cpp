// The numbers of the command line; the first byte chooses the kind.

#include "camera/pixels/PixelMap.h"
#include "camera/settings/Parse.h"
#include "camera/temperature/Scale.h"
#include "fuzz/Fuzz.h"

namespace {

using namespace velmo::camera;

/// What is accepted lies within its limits, and is accepted again as it would be printed.
void parse(int kind, const std::string& text)
{
    if (kind == 0) {
        const double number = parseNumber(text, "x", -1000, 1000);
        require(number >= -1000 && number <= 1000 &&
                parseNumber(numberText(number), "x", -1000, 1000) == number);
    } else if (kind == 1) {
        const cv::Size size = parseSize(text, "x");
        require(size.width >= 1 && size.height >= 1 && size.width <= 16384 && size.height <= 16384);
        require(parseSize(sizeText(size), "x") == size);
    } else if (kind == 2) {
        const Form form = {{"A", Field::Kind::Whole, -5, 70000},
                           {"B", Field::Kind::Percentile, 0, 100},
                           {"C", Field::Kind::Colour, 0, 0},
                           {"D", Field::Kind::Number, 0, 1e12}};
        const std::vector<double> numbers = parseForm(text, "x", form);
        require(numbers.size() == form.size());
        require(numbers[0] >= -5 && numbers[0] <= 70000 && numbers[0] == static_cast<int>(numbers[0]));
        require(numbers[1] >= 0 && numbers[1] <= 100);
        require(numbers[2] >= 0 && numbers[2] <= 0xffffff);
        require(numbers[3] >= 0 && numbers[3] <= 1e12);
    } else if (kind == 3) {
        const Scale scale = Scale::parse(text);
        require(Scale::parse(scale.text()).text() == scale.text());
    } else {
        const PixelMap map = parsePixelList(text, {40, 30});
        require(cv::countNonZero(parsePixelList(pixelList(map), {40, 30}) != map) == 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    return unlessRefused([&] { parse(data[0] % 5, std::string(data + 1, data + size)); });
}
