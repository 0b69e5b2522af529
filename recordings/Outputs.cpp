#include "recordings/Outputs.h"

#include "core/Exception.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmo::recordings {

namespace fs = std::filesystem;

namespace {

const std::string hiddenPrefix = ".velmo-partial-";
constexpr std::size_t nRandomLetters = 6;

// Held while the disk is changed in a way that has to be whole, and for good by abandonAll.
std::mutex& liveMutex()
{
    static std::mutex mutex;
    return mutex;
}

std::set<Outputs*>& liveOutputs()
{
    static std::set<Outputs*> live;
    return live;
}

[[noreturn]] void refuse(const std::string& target, int error)
{
    VELMO_THROW(target + ": cannot be written: " + std::strerror(error));
}

fs::path parentOf(const fs::path& path)
{
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// A folder that is there, by the one name that it always has.
fs::path folderAt(const fs::path& folder, const std::string& target)
{
    std::error_code error;
    fs::path found = fs::canonical(folder, error);
    if (error || !fs::is_directory(found, error))
        VELMO_THROW(target + ": there is no folder " + folder.string());
    return found;
}

bool isThere(const fs::path& path)
{
    std::error_code error;
    return fs::exists(path, error);
}

/// Everything in the file is on the disk, or an error says why not.
void flush(const fs::path& file, const std::string& target)
{
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        refuse(target, errno);
    const int failed = fsync(descriptor) == 0 ? 0 : errno;
    close(descriptor);
    if (failed != 0 && failed != EINVAL) // some file systems have no such thing
        refuse(target, failed);
}

/// Files on their way to their names, all of them or none.
class Renames
{
public:
    /// Keeps what is in the file's place under a second name, so that it can be brought back.
    void prepare(const fs::path& from, const fs::path& to, const std::string& name)
    {
        Rename rename{from, to, name, {}};
        if (isThere(to)) {
            rename.before = from.parent_path() / (".before-" + std::to_string(m_vecRenames.size()));
            std::error_code error;
            fs::create_hard_link(to, rename.before, error);
            if (error) // not every file system has those
                fs::copy_file(to, rename.before, error);
            if (error)
                refuse(name, error.value());
        }
        m_vecRenames.push_back(std::move(rename));
    }

    void make()
    {
        for (std::size_t made = 0; made < m_vecRenames.size(); ++made) {
            std::error_code error;
            fs::rename(m_vecRenames[made].from, m_vecRenames[made].to, error);
            if (error) {
                takeBack(made);
                refuse(m_vecRenames[made].name, error.value());
            }
        }
    }

private:
    struct Rename
    {
        fs::path from;
        fs::path to;
        std::string name;
        fs::path before; ///< empty if nothing was in its place
    };

    void takeBack(std::size_t made) const noexcept
    {
        std::error_code ignored;
        while (made-- > 0) {
            const Rename& rename = m_vecRenames[made];
            if (rename.before.empty())
                fs::rename(rename.to, rename.from, ignored);
            else
                fs::rename(rename.before, rename.to, ignored);
        }
    }

    std::vector<Rename> m_vecRenames;
};

} // namespace

/// A hidden folder that is locked as long as the object lives.
class Outputs::Place
{
public:
    /// @throws std::system_error  if there can be none
    explicit Place(const fs::path& folder)
    {
        while (!makeIn(folder))
            ;
    }

    ~Place() { removeAll(); }

    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    const fs::path& path() const { return m_oPath; }

    /// Under another name first: a thread that still writes finds no folder to make files in.
    void removeAll() noexcept
    {
        if (m_s32Lock < 0)
            return;
        std::error_code ignored; // nothing can be done about it here
        fs::path gone = m_oPath;
        gone += "x";
        fs::rename(m_oPath, gone, ignored);
        fs::remove_all(ignored ? m_oPath : gone, ignored);
        close(m_s32Lock);
        m_s32Lock = -1;
    }

    /// Removes what runs that were killed left in the folder.
    static void removeLeftovers(const fs::path& folder)
    {
        std::error_code error;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
             entry.increment(error)) {
            const std::string name = entry->path().filename().string();
            if (name.compare(0, hiddenPrefix.size(), hiddenPrefix) != 0 ||
                name.size() < hiddenPrefix.size() + nRandomLetters)
                continue;
            const int lock = open(entry->path().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (lock < 0)
                continue;
            std::error_code ignored;
            if (flock(lock, LOCK_EX | LOCK_NB) == 0)
                fs::remove_all(entry->path(), ignored);
            close(lock);
        }
    }

private:
    /// False if another process took it for a leftover before it was locked.
    bool makeIn(const fs::path& folder)
    {
        std::string name = (folder / (hiddenPrefix + std::string(nRandomLetters, 'X'))).string();
        if (mkdtemp(name.data()) == nullptr)
            throw std::system_error(errno, std::generic_category());
        m_oPath = name;
        m_s32Lock = open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        struct stat made = {};
        if (m_s32Lock >= 0 && flock(m_s32Lock, LOCK_EX | LOCK_NB) == 0 && fstat(m_s32Lock, &made) == 0 &&
            made.st_nlink > 0 && isThere(m_oPath))
            return true;
        if (m_s32Lock >= 0)
            close(m_s32Lock);
        m_s32Lock = -1;
        return false;
    }

    fs::path m_oPath;
    int m_s32Lock = -1;
};

Outputs::Outputs(bool force) : m_bForce(force)
{
    const std::lock_guard<std::mutex> lock(liveMutex());
    liveOutputs().insert(this);
}

Outputs::~Outputs()
{
    const std::lock_guard<std::mutex> lock(liveMutex());
    liveOutputs().erase(this);
    m_mapPlaces.clear();
}

void Outputs::protect(const std::vector<std::string>& inputs)
{
    for (const std::string& input : inputs) {
        struct stat found = {};
        if (stat(input == "-" ? "/dev/stdin" : input.c_str(), &found) == 0)
            m_setInputs.emplace(found.st_dev, found.st_ino);
    }
}

void Outputs::refuseInput(const std::string& target) const
{
    struct stat found = {};
    if (stat(target.c_str(), &found) == 0 && m_setInputs.count({found.st_dev, found.st_ino}) > 0)
        VELMO_THROW(target + ": is an input, and no output replaces one");
}

Outputs::Place& Outputs::placeIn(const fs::path& folder, const std::string& target)
{
    const auto found = m_mapPlaces.find(folder);
    if (found != m_mapPlaces.end())
        return *found->second;
    Place::removeLeftovers(folder);
    try {
        return *m_mapPlaces.emplace(folder, std::make_unique<Place>(folder)).first->second;
    } catch (const std::system_error& error) {
        refuse(target, error.code().value());
    }
}

OutputFile Outputs::file(const std::string& target)
{
    return {add(target).string(), target};
}

OutputFile Outputs::companion(const std::string& target)
{
    if (!m_bForce && isThere(target))
        VELMO_THROW(target + ": is there already; it is replaced only by force");
    return file(target);
}

fs::path Outputs::add(const std::string& target)
{
    const fs::path path = target;
    std::error_code error;
    if (!path.has_filename() || fs::is_directory(path, error))
        VELMO_THROW("'" + target + "': a file is to be written, this is a folder");
    if (isThere(path) && !fs::is_regular_file(path, error))
        VELMO_THROW(target + ": is there already, and is no file");
    refuseInput(target);

    const std::lock_guard<std::mutex> lock(liveMutex());
    const fs::path parent = parentOf(path);
    const auto made = m_mapNewFolders.find(fs::absolute(parent).lexically_normal());
    if (made != m_mapNewFolders.end())
        return made->second / path.filename();
    const fs::path folder = folderAt(parent, target);
    fs::path from = placeIn(folder, target).path() / path.filename();
    if (!m_mapMoves.emplace(folder / path.filename(), Move{from, target}).second)
        VELMO_THROW(target + ": is to be written twice");
    return from;
}

void Outputs::folder(const std::string& target)
{
    const fs::path path = fs::path(target).has_filename() ? fs::path(target) : fs::path(target).parent_path();
    std::error_code error;
    if (path.empty() || (isThere(path) && !fs::is_directory(path, error)))
        VELMO_THROW("'" + target + "': is there already, and is no folder");
    const std::lock_guard<std::mutex> lock(liveMutex());
    if (isThere(path)) {
        placeIn(folderAt(path, target), target); // says at once if nothing can be written there
        return;
    }
    const fs::path parent = folderAt(parentOf(path), target);
    const fs::path from = placeIn(parent, target).path() / path.filename();
    fs::create_directory(from, error);
    if (error)
        refuse(target, error.value());
    m_mapMoves.emplace(parent / path.filename(), Move{from, target});
    m_mapNewFolders.emplace(fs::absolute(path).lexically_normal(), from);
}

void Outputs::commit()
{
    // Before the lock: it may take long, and an interrupt waits for nobody.
    for (const auto& [target, move] : m_mapMoves)
        if (fs::is_regular_file(move.from))
            flush(move.from, move.name);
    const std::lock_guard<std::mutex> lock(liveMutex());
    Renames renames;
    // What can fail for want of room comes first.
    for (const auto& [target, move] : m_mapMoves) {
        refuseInput(move.name);
        renames.prepare(move.from, target, move.name);
    }
    renames.make();
    m_mapMoves.clear();
    m_mapNewFolders.clear();
    m_mapPlaces.clear();
}

void Outputs::abandonAll()
{
    liveMutex().lock(); // for good
    for (const Outputs* const outputs : liveOutputs())
        for (const auto& entry : outputs->m_mapPlaces)
            entry.second->removeAll();
}

} // namespace velmo::recordings
