#include "recordings/RawSink.h"

#include "core/Exception.h"

#include <filesystem>

namespace velmo::recordings {

RawSink::RawSink(const std::string& path) : m_strPath(path), m_oPartial(path)
{
    if (std::filesystem::is_directory(path))
        VELMO_THROW(path + ": is a folder; raw frames go into a file");
    m_oFile.open(m_oPartial.path(), std::ios::binary);
    requireGood();
}

void RawSink::write(const cv::Mat& image)
{
    const std::size_t bytes = static_cast<std::size_t>(image.cols) * image.elemSize();
    for (int r = 0; r < image.rows; ++r)
        m_oFile.write(image.ptr<char>(r), static_cast<std::streamsize>(bytes));
    requireGood();
}

void RawSink::write(const std::string& text)
{
    m_oFile << text;
    requireGood();
}

void RawSink::finish()
{
    m_oFile.close();
    requireGood();
    m_oPartial.keep();
}

void RawSink::requireGood() const
{
    if (!m_oFile)
        VELMO_THROW(m_strPath + ": cannot be written");
}

void writeFile(const std::string& path, const std::string& bytes)
{
    RawSink sink(path);
    sink.write(bytes);
    sink.finish();
}

} // namespace velmo::recordings
