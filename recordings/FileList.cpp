#include "recordings/FileList.h"

#include "core/Exception.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include <glob.h>

namespace velmo::recordings {
namespace {

namespace fs = std::filesystem;

bool isDigit(char letter)
{
    return std::isdigit(static_cast<unsigned char>(letter)) != 0;
}

/// The run of digits at `place`, without its leading zeros; moves `place` behind it.
std::string takeNumber(const std::string& text, std::size_t& place)
{
    while (place < text.size() && text[place] == '0')
        ++place;
    const std::size_t begin = place;
    while (place < text.size() && isDigit(text[place]))
        ++place;
    return text.substr(begin, place - begin);
}

bool endsInOneOf(const std::string& path, const std::vector<std::string>& endings)
{
    return endings.empty() || std::find(endings.begin(), endings.end(), endingOf(path)) != endings.end();
}

std::vector<std::string> inFolder(const std::string& folder, const std::vector<std::string>& endings)
{
    std::vector<std::string> files;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (entry->is_regular_file(error) && endsInOneOf(entry->path().string(), endings))
            files.push_back(entry->path().string());
    if (error)
        VELMO_THROW(folder + ": cannot read this folder: " + error.message());
    if (files.empty())
        VELMO_THROW(folder + ": no frames in this folder");
    return files;
}

std::vector<std::string> matching(const std::string& pattern)
{
    glob_t found = {};
    std::vector<std::string> files;
    if (glob(pattern.c_str(), 0, nullptr, &found) == 0)
        for (std::size_t i = 0; i < found.gl_pathc; ++i)
            if (!fs::is_directory(found.gl_pathv[i]))
                files.emplace_back(found.gl_pathv[i]);
    globfree(&found);
    if (files.empty())
        VELMO_THROW(pattern + ": no such file or folder");
    return files;
}

} // namespace

std::string endingOf(const std::string& path)
{
    std::string ending = fs::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return ending;
}

bool naturallyBefore(const std::string& left, const std::string& right)
{
    std::size_t l = 0;
    std::size_t r = 0;
    while (l < left.size() && r < right.size()) {
        if (isDigit(left[l]) && isDigit(right[r])) {
            const std::string leftNumber = takeNumber(left, l);
            const std::string rightNumber = takeNumber(right, r);
            // Of numbers without leading zeros the longer one is the greater.
            if (leftNumber.size() != rightNumber.size())
                return leftNumber.size() < rightNumber.size();
            if (leftNumber != rightNumber)
                return leftNumber < rightNumber;
        } else if (left[l] != right[r]) {
            return left[l] < right[r];
        } else {
            ++l;
            ++r;
        }
    }
    if (l < left.size() || r < right.size())
        return r < right.size();
    return left < right; // they differ in leading zeros at most
}

std::vector<std::string> listFiles(const std::vector<std::string>& inputs,
                                   const std::vector<std::string>& endings)
{
    std::vector<std::string> files;
    for (const std::string& input : inputs) {
        std::error_code error;
        if (fs::exists(input, error) && !fs::is_directory(input, error)) {
            files.push_back(input);
            continue;
        }
        std::vector<std::string> several =
            fs::is_directory(input, error) ? inFolder(input, endings) : matching(input);
        std::sort(several.begin(), several.end(), naturallyBefore);
        files.insert(files.end(), several.begin(), several.end());
    }
    return files;
}

} // namespace velmo::recordings
