#pragma once

#include <filesystem>

namespace velmo::recordings {

/// A hidden name beside a target, for what is not complete yet. What lies there is removed with the object
/// unless it was kept.
class PartialPath
{
public:
    /// @throws Exception  if there is no folder that the target could lie in
    explicit PartialPath(std::filesystem::path target);
    ~PartialPath();

    PartialPath(const PartialPath&) = delete;
    PartialPath& operator=(const PartialPath&) = delete;

    /// Ends like the target, since writers choose the format by that.
    const std::filesystem::path& path() const { return m_oPartial; }

    /// Gives what lies there the target's name, in place of what had it. A folder joins one that is there:
    /// files of the same name are replaced, others stay.
    void keep();

private:
    std::filesystem::path m_oTarget;
    std::filesystem::path m_oPartial;
};

} // namespace velmo::recordings
