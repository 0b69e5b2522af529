#pragma once

#include "core/Export.h"
#include "core/datatypes/Variant.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace velmo::exp {

/// An id split into its first component and the rest; components are separated by "/". Refers to the
/// text of the id, which has to outlive it.
template <class TKey>
class GroupItem;

template <>
class GroupItem<std::string>
{
public:
    /// False for an empty id and for one with an empty component.
    bool isValid() const { return m_bValid; }
    /// The first component.
    std::string_view item() const { return m_strId.substr(0, m_u64Length); }
    bool hasNext() const { return m_u64Length < m_strId.size(); }
    /// What follows the first component; only if `hasNext`.
    GroupItem next() const { return {m_strId.substr(m_u64Length + 1), m_bValid}; }

private:
    friend VELMO_API GroupItem<std::string> discriminate(const std::string& id);

    GroupItem(std::string_view id, bool valid)
        : m_strId(id), m_u64Length(std::min(id.find('/'), id.size())), m_bValid(valid)
    {}

    std::string_view m_strId;
    std::size_t m_u64Length;
    bool m_bValid;
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
    using value_type = Map::value_type;

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
