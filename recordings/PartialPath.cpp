#include "recordings/PartialPath.h"

#include "core/Exception.h"

#include <string>
#include <utility>

#include <unistd.h>

namespace velmo::recordings {

namespace fs = std::filesystem;

PartialPath::PartialPath(fs::path target) : m_oTarget(std::move(target))
{
    if (!m_oTarget.has_filename()) // "pictures/"
        m_oTarget = m_oTarget.parent_path();
    const fs::path folder = m_oTarget.has_parent_path() ? m_oTarget.parent_path() : fs::path(".");
    if (!fs::is_directory(folder))
        VELMO_THROW(m_oTarget.string() + ": there is no folder " + folder.string());
    m_oPartial = folder / ("." + m_oTarget.stem().string() + ".partial-" + std::to_string(getpid()) +
                           m_oTarget.extension().string());
}

PartialPath::~PartialPath()
{
    std::error_code ignored; // nothing can be done about it here
    fs::remove_all(m_oPartial, ignored);
}

void PartialPath::keep()
{
    std::error_code error;
    if (fs::is_directory(m_oPartial) && fs::is_directory(m_oTarget)) {
        for (const fs::directory_entry& entry : fs::directory_iterator(m_oPartial)) {
            fs::rename(entry.path(), m_oTarget / entry.path().filename(), error);
            if (error)
                break;
        }
    } else {
        fs::rename(m_oPartial, m_oTarget, error);
    }
    if (error)
        VELMO_THROW(m_oTarget.string() + ": cannot be written: " + error.message());
}

} // namespace velmo::recordings
