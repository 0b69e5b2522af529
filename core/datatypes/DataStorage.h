#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/datatypes/Variant.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace velmo::exp {

/// An id split into its first component and the rest; components are separated by "/".
template <class TKey>
class GroupItem;

template <>
class VELMO_API GroupItem<std::string>
{
public:
    explicit GroupItem(std::string id);

    /// False for an empty id and for one with an empty component.
    bool isValid() const;
    /// The first component.
    std::string item() const;
    bool hasNext() const;
    /// What follows the first component; an empty id, which is invalid, if nothing does.
    GroupItem next() const;

private:
    std::string m_strId;
};

VELMO_API GroupItem<std::string> discriminate(const std::string& id);

/// What storages of every key type have in common.
class VELMO_API DataStorageBase
{
public:
    virtual ~DataStorageBase();

    /// Removes all entries.
    virtual void clear() = 0;
    /// The number of direct entries; a group counts as one.
    virtual std::size_t size() const = 0;
    /// A copy on the heap; the caller owns it.
    virtual DataStorageBase* clone() const = 0;
    /// @param query  ids (also of entries inside groups) and the values wanted there
    /// @return whether every id of the query leads to an entry whose value equals the wanted one. Where
    ///         a group is wanted, the entry has to be a group that satisfies it in the same way and may
    ///         hold more; where the wanted value is an empty pointer, any value will do. An empty query
    ///         is satisfied; an id that leads nowhere, or is invalid, is not.
    virtual bool satisfiesQuery(const std::map<std::string, std::shared_ptr<Variant>>& query) const = 0;

protected:
    DataStorageBase() = default;
    DataStorageBase(const DataStorageBase&) = default;
    DataStorageBase& operator=(const DataStorageBase&) = default;
};

template <class TKey>
class DataStorage;

/// An ordered tree of typed values: maps a key to a shared value; an entry whose value is itself a
/// storage is a group. An entry inside groups is addressed by its path, "group/subgroup/entry"; an id
/// that is empty or has an empty component is invalid. There are no empty values in a storage.
///
/// A copy has groups of its own and shares the values that are not groups: entries set into the copy
/// never show in the original, a value changed in place shows in both. A group that stands in
/// several places of a tree does so in the copy, too. A moved-from storage is empty and usable.
/// Trees may be as deep as memory allows; nothing here recurses.
///
/// Const members may run on several threads at once while no thread changes the tree.
template <>
class VELMO_API DataStorage<std::string> : public DataStorageBase
{
public:
    using Map = std::map<std::string, std::shared_ptr<Variant>, std::less<>>;
    using const_iterator = Map::const_iterator;
    using iterator = const_iterator; ///< entries change through the storage alone
    using value_type = Map::value_type;

    /// What `operator[]` of a storage that may change returns: the shared pointer to the value under an id,
    /// empty if there is none, to which a value can be assigned in the same expression.
    class Entry : public std::shared_ptr<Variant>
    {
    public:
        /// As `set`.
        Entry operator=(const std::shared_ptr<Variant>& value) && { return assign(value); }
        Entry operator=(const Entry& value) && { return assign(value); }

        Entry(const Entry&) = default;
        // Of the pointer alone they would change nothing in the storage.
        void reset() = delete;
        void swap(std::shared_ptr<Variant>&) = delete;

    private:
        friend class DataStorage;

        Entry(DataStorage& storage, const std::string& id, const std::shared_ptr<Variant>& value)
            : std::shared_ptr<Variant>(value), m_oStorage(storage), m_strId(id)
        {}

        Entry assign(const std::shared_ptr<Variant>& value)
        {
            m_oStorage.set(m_strId, value);
            return {m_oStorage, m_strId, value};
        }

        DataStorage& m_oStorage;
        std::string m_strId;
    };

    DataStorage() noexcept;
    DataStorage(const DataStorage& other);
    DataStorage(DataStorage&& other) noexcept;
    DataStorage& operator=(const DataStorage& other);
    /// Not for moving a tree into a group of its own: the tree would hold itself and never be freed.
    DataStorage& operator=(DataStorage&& other) noexcept;
    ~DataStorage() override;

    void clear() override;
    std::size_t size() const override;
    DataStorage* clone() const override;
    bool satisfiesQuery(const std::map<std::string, std::shared_ptr<Variant>>& query) const override;
    /// As the query that has the entries of `query`.
    virtual bool satisfiesQuery(const DataStorage& query) const;

    /// The direct entries in ascending byte-wise order of their keys.
    const_iterator begin() const noexcept;
    const_iterator end() const noexcept;
    /// The direct entry of exactly this key, "/" included, or `end()`; never throws.
    const_iterator find(std::string_view key) const noexcept;

    /// The value under `id`, or an empty pointer if there is none.
    /// @throws Exception  for an invalid id, and if the path leads through a value that is no group
    std::shared_ptr<Variant> get(const std::string& id) const;

    /// As `get`, without a copy of the pointer; the reference is good until the storage changes.
    const std::shared_ptr<Variant>& operator[](const std::string& id) const;
    /// As `get` when it is read, as `set` when it is assigned to; reading makes no entry.
    Entry operator[](const std::string& id) { return {*this, id, std::as_const(*this)[id]}; }

    /// Inserts or replaces the value under `id`; groups missing on the way are made. The storage and
    /// the caller share the value from then on.
    /// @throws Exception  for an invalid id, if the path leads through a value that is no group, for an
    ///                    empty pointer, and for a group that holds the place it is set into (the tree
    ///                    would hold itself); the storage is unchanged then.
    void set(const std::string& id, const std::shared_ptr<Variant>& value);

    /// Whether both trees have the same ids with equal values.
    bool operator==(const DataStorage& other) const;
    bool operator!=(const DataStorage& other) const { return !(*this == other); }

private:
    struct Place;

    static DataStorage* groupIn(const std::shared_ptr<Variant>& value);
    static bool reaches(const DataStorage& start, const DataStorage& target);
    static void release(Map& entries) noexcept;
    void copyFrom(const DataStorage& other);
    const Map& entries() const noexcept;
    Map& entries();
    Place locate(const std::string& id) const;

    std::unique_ptr<Map> m_pEntries; ///< made with the first entry
};

extern template class Variant_<DataStorage<std::string>>;

} // namespace velmo::exp
