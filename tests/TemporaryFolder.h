#pragma once

#include <cstdlib>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>

/// A folder that is gone after the test.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "thermal-test-XXXXXX";
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary folder");
        m_oPath = name;
    }
    ~TemporaryFolder() { std::filesystem::remove_all(m_oPath); }

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_oPath; }

    /// The names of what lies in it, hidden ones too.
    std::set<std::string> entries() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_oPath))
            names.insert(entry.path().filename());
        return names;
    }

private:
    std::filesystem::path m_oPath;
};
