#include "recordings/FrameFiles.h"

#include "recordings/Degrees.h"
#include "recordings/ImageFile.h"

#include "core/Exception.h"

#include <utility>

namespace velmo::recordings {
namespace {

/// The images of several files, as they are.
class ImageFiles
{
public:
    ImageFiles(std::vector<std::string> files, bool sameUnit)
        : m_vecFiles(std::move(files)), m_bSameUnit(sameUnit)
    {
        rewind();
        m_bDegrees = m_pFile->holdsDegrees();
        m_strUnit = m_pFile->unit();
    }

    bool degrees() const { return m_bDegrees; }
    const std::string& unit() const { return m_strUnit; }
    const std::vector<std::string>& files() const { return m_vecFiles; }

    void rewind() { open(0); }

    bool next(cv::Mat& image)
    {
        while (!m_pFile->next(image)) {
            if (m_nFile + 1 == m_vecFiles.size())
                return false;
            open(m_nFile + 1);
            requireKind();
        }
        ++m_nImage;
        return true;
    }

    std::optional<std::size_t> count() const
    {
        std::size_t all = 0;
        for (const std::string& file : m_vecFiles) {
            const std::optional<std::size_t> images = countImages(file);
            if (!images)
                return std::nullopt;
            all += *images;
        }
        return all;
    }

    /// Where the last image came from, for messages.
    std::string place() const
    {
        return m_vecFiles[m_nFile] + (m_nImage > 1 ? ", frame " + std::to_string(m_nImage) : "");
    }

private:
    void open(std::size_t file)
    {
        m_pFile = openImageFile(m_vecFiles[file]);
        m_nFile = file;
        m_nImage = 0;
    }

    void requireKind() const
    {
        if (m_pFile->holdsDegrees() != m_bDegrees)
            VELMO_THROW(m_vecFiles[m_nFile] + (m_bDegrees ? ": holds counts, " : ": holds degrees, ") +
                        m_vecFiles[0] + (m_bDegrees ? " degrees" : " counts"));
        if (m_bSameUnit && m_pFile->unit() != m_strUnit)
            VELMO_THROW(m_vecFiles[m_nFile] + ": its unit is '" + m_pFile->unit() + "', that of " +
                        m_vecFiles[0] + " '" + m_strUnit + "'");
    }

    std::vector<std::string> m_vecFiles;
    bool m_bSameUnit;
    std::unique_ptr<ImageFile> m_pFile;
    std::size_t m_nFile = 0;
    std::size_t m_nImage = 0;
    bool m_bDegrees = false;
    std::string m_strUnit;
};

class FrameFiles : public FrameSource
{
public:
    FrameFiles(std::string name, std::vector<std::string> files, bool sameUnit)
        : m_strName(std::move(name)), m_oImages(std::move(files), sameUnit), m_nCount(m_oImages.count())
    {
        if (m_oImages.degrees())
            findScale();
    }

    bool next(Frame& frame) override
    {
        cv::Mat image;
        if (!m_oImages.next(image))
            return false;
        frame = m_oImages.degrees() ? m_oScale.counts(image) : Frame(image);
        return true;
    }

    std::optional<std::size_t> count() const override { return m_nCount; }
    std::string name() const override { return m_strName; }
    std::vector<std::string> files() const override { return m_oImages.files(); }
    std::string unit() const override { return m_oImages.degrees() ? m_oScale.unit : m_oImages.unit(); }

private:
    void findScale()
    {
        DegreeRange range;
        for (cv::Mat image; m_oImages.next(image);)
            range = widened(range, image, m_oImages.place());
        m_oScale = DegreeScale::holding(range);
        m_oImages.rewind();
    }

    std::string m_strName;
    ImageFiles m_oImages;
    std::optional<std::size_t> m_nCount;
    DegreeScale m_oScale;
};

} // namespace

std::unique_ptr<FrameSource> openFrameFiles(std::string name, std::vector<std::string> files, bool sameUnit)
{
    return std::make_unique<FrameFiles>(std::move(name), std::move(files), sameUnit);
}

} // namespace velmo::recordings
