#include "recordings/GreyWriters.h"

#include "recordings/ImageSize.h"
#include "recordings/UnitText.h"

#include <algorithm>
#include <cstdio>

namespace velmo::recordings {
namespace {

class RawWriter : public ImageWriter
{
public:
    explicit RawWriter(OutputFile file) : m_oFile(std::move(file)) {}

    void write(const cv::Mat& image) override
    {
        m_oShape.require(image, m_oFile.name());
        m_oFile.write(image);
    }

    void finish() override { m_oFile.finish(); }

private:
    OutputFile m_oFile;
    OneShape m_oShape;
};

class NpyWriter : public ImageWriter
{
public:
    explicit NpyWriter(OutputFile file) : m_oFile(std::move(file)) { writeHeader(); }

    void write(const cv::Mat& image) override
    {
        m_oShape.require(image, m_oFile.name());
        m_oFile.write(image);
        ++m_nFrames;
    }

    void finish() override
    {
        std::rewind(m_oFile.get());
        writeHeader(); // now that the number of frames is known
        m_oFile.finish();
    }

private:
    void writeHeader()
    {
        char header[129];
        const cv::Size size = m_oShape.size();
        // Version 1.0, and 118 bytes of text: padded with spaces, so that the values begin at byte 128.
        const int length = std::snprintf(
            header, sizeof header,
            "\x93NUMPY\x01%c\x76%c{'descr': '<%s', 'fortran_order': False, 'shape': (%zu, %d, %d), }", 0, 0,
            m_oShape.type() == CV_32F ? "f4" : "u2", m_nFrames, size.height, size.width);
        std::fill(header + length, header + 127, ' ');
        header[127] = '\n';
        m_oFile.write(header, 128);
    }

    OutputFile m_oFile;
    OneShape m_oShape;
    std::size_t m_nFrames = 0;
};

} // namespace

std::unique_ptr<ImageWriter> createRaw(OutputFile file)
{
    return std::make_unique<RawWriter>(std::move(file));
}

std::unique_ptr<ImageWriter> createNpy(OutputFile file)
{
    return std::make_unique<NpyWriter>(std::move(file));
}

void writePgm(OutputFile file, const cv::Mat& frame, const std::string& unit)
{
    const std::string header = "P5\n" + (unit.empty() ? "" : "# " + unitLine(unit) + "\n") +
                               std::to_string(frame.cols) + " " + std::to_string(frame.rows) + "\n65535\n";
    file.write(header);
    constexpr bool highByteFirst = true;
    file.write(frame, highByteFirst);
    file.finish();
}

} // namespace velmo::recordings
