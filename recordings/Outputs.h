#pragma once

#include "recordings/OutputFile.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace velmo::recordings {

/// All files that a command writes, as one transaction: they are written in hidden folders beside their
/// targets and get their names together by commit(), or not at all. Until then everything is as it was, and
/// no target is a file that is read.
///
/// A hidden folder is locked as long as the object lives. One that a killed run left behind is found by that
/// and removed by the next run that writes to the same folder.
class Outputs
{
public:
    /// @param force  companions may replace what is there
    explicit Outputs(bool force = false);

    /// Takes back what was not committed.
    ~Outputs();

    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

    /// Files that are read: no target may be one of them, by whatever name.
    void protect(const std::vector<std::string>& inputs);

    /// @throws Exception  for a target that is protected
    void refuseInput(const std::string& target) const;

    /// A file to write that becomes `target`.
    /// @throws Exception  that names the target: for one that is protected, that is written already, or in
    ///                    whose place there is a folder or a device, and if its folder cannot be written
    OutputFile file(const std::string& target);

    /// The same for a file that joins another one without having been named: what is there is replaced only
    /// by force.
    OutputFile companion(const std::string& target);

    /// Makes `target` a folder that files may go into; one that is there keeps its other files.
    /// @throws Exception  as for a file
    void folder(const std::string& target);

    /// Gives everything its name. On any error what was there is there again.
    /// @throws Exception  that names the target that cannot be written
    void commit();

    /// Takes back what all objects have not committed, and stops every thread that goes on with one: for a
    /// process that ends.
    static void abandonAll();

private:
    class Place;

    struct Move
    {
        std::filesystem::path from;
        std::string name; ///< of the target, as it was given
    };

    std::filesystem::path add(const std::string& target);
    Place& placeIn(const std::filesystem::path& folder, const std::string& target);

    bool m_bForce;
    std::set<std::pair<std::uintmax_t, std::uintmax_t>> m_setInputs; ///< device and number
    std::map<std::filesystem::path, std::unique_ptr<Place>> m_mapPlaces;
    std::map<std::filesystem::path, std::filesystem::path> m_mapNewFolders; ///< target to where it is made
    std::map<std::filesystem::path, Move> m_mapMoves;                       ///< by the target
};

} // namespace velmo::recordings
