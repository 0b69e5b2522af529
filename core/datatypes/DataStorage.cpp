#include "core/datatypes/DataStorage.h"

#include "core/Exception.h"
#include "core/datatypes/TypeName.h"

#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace velmo::exp {

namespace {

using Storage = DataStorage<std::string>;

/// An id on the way through a tree: refers to the text, so that a step costs nothing.
struct IdView
{
    std::string_view text;

    bool isValid() const
    {
        return !text.empty() && text.front() != '/' && text.back() != '/' && text.find("//") == text.npos;
    }
    std::string_view item() const { return text.substr(0, text.find('/')); }
    bool hasNext() const { return text.find('/') != text.npos; }
    IdView next() const { return {hasNext() ? text.substr(text.find('/') + 1) : std::string_view()}; }
};

} // namespace

GroupItem<std::string>::GroupItem(std::string id) : m_strId(std::move(id)) {}

bool GroupItem<std::string>::isValid() const
{
    return IdView{m_strId}.isValid();
}

std::string GroupItem<std::string>::item() const
{
    return std::string(IdView{m_strId}.item());
}

bool GroupItem<std::string>::hasNext() const
{
    return IdView{m_strId}.hasNext();
}

GroupItem<std::string> GroupItem<std::string>::next() const
{
    return GroupItem(std::string(IdView{m_strId}.next().text));
}

GroupItem<std::string> discriminate(const std::string& id)
{
    return GroupItem<std::string>(id);
}

DataStorageBase::~DataStorageBase() = default;

/// How far an id leads into a tree.
struct Storage::Place
{
    bool bValid;                           ///< the id is one; otherwise nothing was looked up
    const Storage* storage;                ///< the innermost group reached
    IdView rest;                           ///< the component looked up there, and what follows it
    std::shared_ptr<Variant> const* value; ///< what stands under that component, or null

    /// Why the id leads nowhere in this tree and never will; empty if it does or may.
    std::string refusal() const
    {
        if (!bValid)
            return "invalid id";
        if (!value || !rest.hasNext())
            return "";
        return "not a valid storage type: " + std::string(rest.item()) +
               "\ntype: " + nameOf((*value)->getTypeInfo()) + "\nexpected type: " + nameOf(typeid(Storage));
    }
};

Storage::DataStorage() noexcept = default;

Storage::DataStorage(const DataStorage& other) : DataStorageBase(other)
{
    copyFrom(other);
}

Storage::DataStorage(DataStorage&& other) noexcept = default;

Storage& Storage::operator=(const DataStorage& other)
{
    DataStorage copy(other);
    m_pEntries.swap(copy.m_pEntries);
    return *this;
}

Storage& Storage::operator=(DataStorage&& other) noexcept
{
    DataStorage taken(std::move(other));
    m_pEntries.swap(taken.m_pEntries);
    return *this;
}

Storage::~DataStorage()
{
    clear();
}

void Storage::clear()
{
    // Taken away first: what the entries' end might reach finds an empty storage.
    if (const std::unique_ptr<Map> taken = std::move(m_pEntries))
        release(*taken);
}

std::size_t Storage::size() const
{
    return entries().size();
}

Storage* Storage::clone() const
{
    return new DataStorage(*this);
}

Storage::const_iterator Storage::begin() const noexcept
{
    return entries().begin();
}

Storage::const_iterator Storage::end() const noexcept
{
    return entries().end();
}

Storage::const_iterator Storage::find(std::string_view key) const noexcept
{
    return entries().find(key);
}

const Storage::Map& Storage::entries() const noexcept
{
    static const Map none;
    return m_pEntries ? *m_pEntries : none;
}

Storage::Map& Storage::entries()
{
    if (!m_pEntries)
        m_pEntries = std::make_unique<Map>();
    return *m_pEntries;
}

/// The storage that a value holds, or null.
Storage* Storage::groupIn(const std::shared_ptr<Variant>& value)
{
    return value->getTypeInfo() == typeid(DataStorage) ? static_cast<DataStorage*>(value->address())
                                                       : nullptr;
}

/// Empties a map. Groups that nobody else holds are taken apart one by one: left to their
/// destructors, a deep tree would exhaust the stack. Nodes only change their map, so nothing is allocated.
void Storage::release(Map& entries) noexcept
{
    std::multimap<std::string, std::shared_ptr<Variant>, std::less<>> pending;
    const auto takeGroups = [&pending](Map& from) {
        for (auto entry = from.begin(); entry != from.end();) {
            const auto current = entry++;
            if (current->second.use_count() == 1 && groupIn(current->second))
                pending.insert(from.extract(current));
        }
        from.clear();
    };
    takeGroups(entries);
    while (!pending.empty()) {
        const auto node = pending.extract(pending.begin());
        if (const std::unique_ptr<Map> taken = std::move(groupIn(node.mapped())->m_pEntries))
            takeGroups(*taken);
    }
}

void Storage::copyFrom(const DataStorage& other)
{
    std::unordered_map<const DataStorage*, std::shared_ptr<Variant>> copies;
    std::vector<std::pair<const DataStorage*, DataStorage*>> pending{{&other, this}};
    while (!pending.empty()) {
        const auto [from, to] = pending.back();
        pending.pop_back();
        for (const auto& [key, value] : *from) {
            Map& target = to->entries();
            const DataStorage* const group = groupIn(value);
            if (!group) {
                target.emplace_hint(target.end(), key, value);
                continue;
            }
            auto& copy = copies[group];
            if (!copy) {
                copy = Variant::create(DataStorage());
                pending.emplace_back(group, groupIn(copy));
            }
            target.emplace_hint(target.end(), key, copy);
        }
    }
}

Storage::Place Storage::locate(const std::string& id) const
{
    const IdView all{id};
    Place place{all.isValid(), this, all, nullptr};
    while (place.bValid) {
        const auto entry = place.storage->find(place.rest.item());
        place.value = entry == place.storage->end() ? nullptr : &entry->second;
        const DataStorage* const group = place.value ? groupIn(*place.value) : nullptr;
        if (!group || !place.rest.hasNext())
            break;
        place.storage = group;
        place.rest = place.rest.next();
    }
    return place;
}

std::shared_ptr<Variant> Storage::get(const std::string& id) const
{
    const Place place = locate(id);
    if (const std::string refusal = place.refusal(); !refusal.empty())
        VELMO_THROW(refusal);
    return place.value ? *place.value : nullptr;
}

const std::shared_ptr<Variant>& Storage::operator[](const std::string& id) const
{
    static const std::shared_ptr<Variant> none;
    const Place place = locate(id);
    if (const std::string refusal = place.refusal(); !refusal.empty())
        VELMO_THROW(refusal);
    return place.value ? *place.value : none;
}

void Storage::set(const std::string& id, const std::shared_ptr<Variant>& value)
{
    const Place place = locate(id);
    if (const std::string refusal = place.refusal(); !refusal.empty())
        VELMO_THROW(refusal);
    if (!value)
        VELMO_THROW("An empty value can not be set: " + id);
    if (const DataStorage* const group = groupIn(value); group && reaches(*group, *place.storage))
        VELMO_THROW("A storage can not hold itself: " + id);

    // Missing groups are built around the value before the tree is touched.
    std::shared_ptr<Variant> top;
    std::shared_ptr<Variant>* slot = &top;
    for (auto component = place.rest; component.hasNext();) {
        component = component.next();
        *slot = Variant::create(DataStorage());
        slot = &groupIn(*slot)->entries()[std::string(component.item())];
    }
    *slot = value;
    // The group reached belongs to this tree, which is not const.
    const_cast<DataStorage*>(place.storage)->entries()[std::string(place.rest.item())] = std::move(top);
}

/// Whether `target` is `start` or a group somewhere inside.
bool Storage::reaches(const DataStorage& start, const DataStorage& target)
{
    std::unordered_set<const DataStorage*> seen{&start};
    std::vector<const DataStorage*> pending{&start};
    while (!pending.empty()) {
        const DataStorage* const storage = pending.back();
        pending.pop_back();
        if (storage == &target)
            return true;
        for (const auto& entry : *storage)
            if (const DataStorage* const group = groupIn(entry.second); group && seen.insert(group).second)
                pending.push_back(group);
    }
    return false;
}

bool Storage::operator==(const DataStorage& other) const
{
    std::set<std::pair<const DataStorage*, const DataStorage*>> seen{{this, &other}};
    std::vector<std::pair<const DataStorage*, const DataStorage*>> pending{{this, &other}};
    while (!pending.empty()) {
        const auto [left, right] = pending.back();
        pending.pop_back();
        if (left->size() != right->size())
            return false;
        for (auto a = left->begin(), b = right->begin(); a != left->end(); ++a, ++b) {
            if (a->first != b->first)
                return false;
            const DataStorage* const group = groupIn(a->second);
            const DataStorage* const otherGroup = groupIn(b->second);
            if (group && otherGroup) {
                if (seen.emplace(group, otherGroup).second)
                    pending.emplace_back(group, otherGroup);
            } else if (!a->second->equal(b->second)) {
                return false;
            }
        }
    }
    return true;
}

bool Storage::satisfiesQuery(const std::map<std::string, std::shared_ptr<Variant>>& query) const
{
    for (const auto& [id, wanted] : query) {
        const Place place = locate(id);
        if (!place.value || !place.refusal().empty())
            return false;
        if (!wanted)
            continue;
        const DataStorage* const wantedGroup = groupIn(wanted);
        const DataStorage* const group = groupIn(*place.value);
        if (wantedGroup && group ? !group->satisfiesQuery(*wantedGroup) : !wanted->equal(*place.value))
            return false;
    }
    return true;
}

bool Storage::satisfiesQuery(const DataStorage& query) const
{
    std::set<std::pair<const DataStorage*, const DataStorage*>> seen{{this, &query}};
    std::vector<std::pair<const DataStorage*, const DataStorage*>> pending{{this, &query}};
    while (!pending.empty()) {
        const auto [storage, wanted] = pending.back();
        pending.pop_back();
        for (const auto& [key, value] : *wanted) {
            const auto found = storage->find(key);
            if (found == storage->end())
                return false;
            const DataStorage* const wantedGroup = groupIn(value);
            const DataStorage* const group = groupIn(found->second);
            if (wantedGroup && group) {
                if (seen.emplace(group, wantedGroup).second)
                    pending.emplace_back(group, wantedGroup);
            } else if (!value->equal(found->second)) {
                return false;
            }
        }
    }
    return true;
}

} // namespace velmo::exp
