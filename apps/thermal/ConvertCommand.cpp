#include "apps/thermal/Commands.h"
#include "apps/thermal/EachImage.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/OutputOptions.h"
#include "camera/settings/Parse.h"
#include "recordings/FileList.h"
#include "recordings/Frames.h"
#include "recordings/PictureSink.h"
#include "recordings/RawStream.h"
#include "vision/imgproc/ColorConvert.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

using velmo::vision::ColorConvert;

struct ConvertOptions
{
    std::vector<std::string> inputs;
    std::string raw;
    std::string from;
    std::string to;
    std::string out;
    double fps = 9;
    bool quiet = false;
};

/// A layout that raw frames can have.
struct Layout
{
    const char* name;
    int bytesPerPixel;
    void (*toPicture)(const cv::Mat&, cv::Mat_<cv::Vec<unsigned char, 3>>&);
};

const Layout layouts[] = {
    {"yuyv", 2, ColorConvert::convertYUYVToBGR},
    {"uyvy", 2, ColorConvert::convertUYVYToBGR},
    {"uy1vy0", 2, ColorConvert::convertUY1VY0ToBGR},
    {"ycbcr", 3, ColorConvert::convertYCbCrtoBRG},
};

const Layout& layoutOf(const std::string& name)
{
    return *std::find_if(std::begin(layouts), std::end(layouts),
                         [&](const Layout& layout) { return layout.name == name; });
}

/// Where colour comes from: frames as they are delivered, or pictures.
class ColourSource
{
public:
    virtual ~ColourSource() = default;

    /// The next one as it is, of so many bytes per pixel; false after the last one.
    virtual bool next(cv::Mat& image) = 0;
    virtual std::optional<std::size_t> count() const = 0;
    virtual std::string name() const = 0;
    virtual std::vector<std::string> files() const = 0;
    virtual std::string remark() const { return ""; }
    virtual Picture picture(const cv::Mat& image) const = 0;
};

class RawColours : public ColourSource
{
public:
    RawColours(const ConvertOptions& options, const Layout& layout, cv::Size size)
        : m_strName(options.inputs.front()), m_oLayout(layout), m_oSize(size),
          m_oStream(options.inputs == std::vector<std::string>{"-"} ? options.inputs
                                                                    : listFiles(options.inputs, {}),
                    static_cast<std::size_t>(size.area()) * static_cast<std::size_t>(layout.bytesPerPixel),
                    options.raw + " " + layout.name + " frames")
    {}

    bool next(cv::Mat& image) override
    {
        image = cv::Mat(m_oSize, CV_8UC(m_oLayout.bytesPerPixel));
        return m_oStream.next(image.data);
    }

    std::optional<std::size_t> count() const override { return m_oStream.count(); }
    std::string name() const override { return m_strName; }
    std::vector<std::string> files() const override { return m_oStream.files(); }
    std::string remark() const override { return m_oStream.remark(); }

    Picture picture(const cv::Mat& image) const override
    {
        Picture picture;
        m_oLayout.toPicture(image, picture);
        return picture;
    }

private:
    std::string m_strName;
    const Layout& m_oLayout;
    cv::Size m_oSize;
    RawStream m_oStream;
};

class PictureColours : public ColourSource
{
public:
    explicit PictureColours(const std::vector<std::string>& inputs)
        : m_strName(inputs.front()), m_vecFiles(listFiles(inputs, {".png", ".ppm", ".jpg", ".jpeg", ".bmp"}))
    {}

    bool next(cv::Mat& image) override
    {
        if (m_nNext == m_vecFiles.size())
            return false;
        image = readPicture(m_vecFiles[m_nNext++]);
        return true;
    }

    std::optional<std::size_t> count() const override { return m_vecFiles.size(); }
    std::string name() const override { return m_strName; }
    std::vector<std::string> files() const override { return m_vecFiles; }
    Picture picture(const cv::Mat& image) const override { return image; }

private:
    std::string m_strName;
    std::vector<std::string> m_vecFiles;
    std::size_t m_nNext = 0;
};

/// The pairs of 4:2:2 layouts reach from row to row, but the last pixel of an odd number has no partner.
void requirePairs(cv::Size size, const std::string& layout)
{
    if (size.area() % 2 != 0)
        throw UsageError(layout + ": pixels come in pairs, but " + std::to_string(size.width) + "x" +
                         std::to_string(size.height) + " is an odd number of them");
}

std::unique_ptr<ColourSource> openColours(const ConvertOptions& options)
{
    if (options.from == "png") {
        if (!options.raw.empty())
            throw UsageError("--raw: pictures have their own size, leave it out");
        return std::make_unique<PictureColours>(options.inputs);
    }
    if (options.raw.empty())
        throw UsageError("--from " + options.from + ": give the size of the frames with --raw WxH");
    const Layout& layout = layoutOf(options.from);
    const cv::Size size = parseSize(options.raw, "--raw");
    if (layout.bytesPerPixel == 2)
        requirePairs(size, options.from);
    return std::make_unique<RawColours>(options, layout, size);
}

/// What the encoder takes: three bytes per pixel, or two.
cv::Mat encoded(cv::Mat ycbcr, const std::string& to)
{
    if (to == "ycbcr")
        return ycbcr;
    requirePairs(ycbcr.size(), to);
    cv::Mat packed(ycbcr.size(), CV_8UC2);
    ColorConvert::convertYCbCrtoYUV2(ycbcr.data, packed.data, ycbcr.total());
    return packed;
}

cv::Mat ycbcrOf(const ColourSource& source, const cv::Mat& image, const std::string& from)
{
    if (from == "ycbcr") // already; by way of a picture it would lose a little
        return image;
    Picture picture = source.picture(image).clone();
    ColorConvert::convertBGR888ToYCbCr(picture.data, picture.data, picture.total());
    return std::move(picture);
}

void convert(const ConvertOptions& options)
{
    if (options.from == options.to)
        throw UsageError("--to " + options.to + ": that is what the input is");
    const auto source = openColours(options);
    Outputs outputs;
    outputs.protect(source->files());
    if (options.to == "png") {
        const auto sink = openSink(outputs, options.out, source->count(), options.fps);
        forEachImage<cv::Mat>(*source, options.quiet,
                              [&](const cv::Mat& image) { sink->write(source->picture(image)); });
        sink->finish();
        outputs.commit();
        return;
    }
    OutputFile file = outputs.file(options.out);
    forEachImage<cv::Mat>(*source, options.quiet, [&](const cv::Mat& image) {
        file.write(encoded(ycbcrOf(*source, image, options.from), options.to));
    });
    file.finish();
    outputs.commit();
}

} // namespace

void addConvertCommand(const Command& program)
{
    auto options = std::make_shared<ConvertOptions>();
    const Command command = program.sub(
        "convert", "Turns frames of the visual sensor into pictures, and pictures into encoder frames");
    command
        .option("INPUT", options->inputs,
                "Raw files or - for standard input; with --from png picture files, a folder or a quoted "
                "pattern")
        .required();
    command.option("--raw", options->raw, "Size of the raw frames").form("WxH");
    command
        .option("--from", options->from,
                "What the input is: yuyv, uyvy, uy1vy0 (two bytes per pixel), ycbcr (three), or png for "
                "pictures of any kind")
        .required()
        .oneOf({"yuyv", "uyvy", "uy1vy0", "ycbcr", "png"})
        .form("LAYOUT");
    command
        .option("--to", options->to,
                "What to make of it: png for pictures, or ycbcr or yuv2 as the encoder takes them")
        .oneOf({"png", "ycbcr", "yuv2"})
        .required()
        .form("LAYOUT");
    command
        .option("--out", options->out,
                "Where pictures go: a .png for one, a film (.mp4, .mkv, .avi), or a folder; or the file "
                "for raw frames")
        .required()
        .form("PATH");
    addFps(command, options->fps);
    addQuiet(command, options->quiet);
    command.run([options] { convert(*options); });
}

} // namespace thermal
