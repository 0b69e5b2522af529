#include "recordings/RawSink.h"

#include "core/Exception.h"

#include <filesystem>

namespace velmo::recordings {

RawSink::RawSink(const std::string& path) : m_oPartial(path), m_oFile(m_oPartial.path(), path)
{
    if (std::filesystem::is_directory(path))
        VELMO_THROW(path + ": is a folder; raw frames go into a file");
}

void RawSink::write(const cv::Mat& image)
{
    m_oFile.write(image);
}

void RawSink::write(const std::string& text)
{
    m_oFile.write(text.data(), text.size());
}

void RawSink::finish()
{
    m_oFile.finish();
    m_oPartial.keep();
}

void writeFile(const std::string& path, const std::string& bytes)
{
    RawSink sink(path);
    sink.write(bytes);
    sink.finish();
}

} // namespace velmo::recordings
