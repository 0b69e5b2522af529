#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/datatypes/DataStorage.h"

#include <istream>
#include <string>
#include <utility>
#include <vector>

namespace velmo::camera {

struct Key;

/// What is chosen of everything that can be chosen: a tree of settings, each of them a row of the table in
/// camera/settings/Keys.h. What is not in the tree has its default. Paths and values that are not in the
/// table are refused, so that what is here is in order.
class VELMO_API Settings
{
public:
    using Tree = exp::DataStorage<std::string>;

    /// Everything at its default.
    Settings() = default;

    /// @throws Exception  for the first entry that is no setting, or whose value it does not take
    explicit Settings(const Tree& tree);

    /// A settings file, XML or INI: the library's own storage files.
    /// @throws Exception  also for a text that is neither
    static Settings read(std::istream& in);

    /// Sets a flag, a number or a text: `set("noise/temporal", "16:1843")`.
    /// @throws Exception  for a path or value that is not in the table; nothing changes then
    template <class T>
    void set(const std::string& path, T&& value)
    {
        put(path, *exp::Variant::create(std::forward<T>(value)));
    }

    /// @param path   of the setting
    /// @param value  as typed or read from a file
    /// @param what   stands for the path in what is said of a refused value
    void set(const std::string& path, const std::string& value, const std::string& what);

    /// The value as a text.
    /// @throws Exception  for a path that is not in the table, as the following do
    std::string text(const std::string& path) const;
    bool flag(const std::string& path) const { return text(path) == "true"; }

    /// The numbers of a form; none if the value is a word, such as "auto".
    std::vector<double> numbers(const std::string& path) const;

    /// The values of a list.
    std::vector<std::string> list(const std::string& path) const;

    /// What was set.
    const Tree& tree() const { return m_oTree; }

    /// All settings, with what they do and take, as an INI file that `read` turns into these settings again.
    std::string ini() const;

private:
    void add(const Tree& group, const std::string& prefix);
    void put(const std::string& path, const exp::Variant& value);
    std::string text(const Key& key) const;

    Tree m_oTree;
};

} // namespace velmo::camera
