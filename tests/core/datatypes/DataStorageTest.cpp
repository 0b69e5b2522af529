#include "core/datatypes/DataStorage.h"

#include "core/Exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace velmo::exp;
using testing::ElementsAre;

namespace {

using Storage = DataStorage<std::string>;

std::shared_ptr<Variant> number(int value)
{
    return Variant::create(value);
}

std::vector<std::string> keys(const Storage& storage)
{
    std::vector<std::string> result;
    for (const auto& [key, value] : storage)
        result.push_back(key);
    return result;
}

using Refusal = std::pair<std::string, std::string>;

/// The message of what `call` throws, and the end of its location after the line number.
template <class Call>
Refusal refusal(Call call)
{
    try {
        call();
    } catch (const Exception& error) {
        return {error.what(), error.location().substr(error.location().rfind(": ") + 2)};
    }
    return {"nothing thrown", ""};
}

std::string deepPath(int components)
{
    std::string path = "a";
    for (int i = 1; i < components; ++i)
        path += "/a";
    return path;
}

} // namespace

TEST(DataStorage, KeepsItsEntriesInByteOrder)
{
    Storage storage;
    EXPECT_EQ(storage.size(), 0u);
    for (const char* key : {"b", "\xC3\xA4", "B", "a b", "a"})
        storage.set(key, number(1));
    EXPECT_THAT(keys(storage), ElementsAre("B", "a", "a b", "b", "\xC3\xA4"));
    EXPECT_EQ(storage.size(), 5u);
    storage.clear();
    EXPECT_EQ(storage.begin(), storage.end());
}

TEST(DataStorage, SharesTheValuesSetAndReplacesThem)
{
    Storage storage;
    const auto one = number(1), two = number(2);
    storage.set("x", one);
    EXPECT_EQ(storage.get("x"), one);
    storage.set("x", two);
    EXPECT_EQ(storage["x"], two);
    EXPECT_EQ(storage.size(), 1u);
    EXPECT_EQ(storage.get("y"), nullptr);
    EXPECT_EQ(storage["y"], nullptr);
    EXPECT_EQ(storage.size(), 1u) << "asking made an entry";
}

TEST(DataStorage, AssignsThroughItsIndex)
{
    Storage storage;
    static_assert(std::is_same_v<Storage::iterator, Storage::const_iterator>);
    storage["a/b"] = number(1);
    storage["c"] = storage["a/b"];
    const std::shared_ptr<Variant> copy = storage["c"];
    EXPECT_EQ(copy, storage.get("a/b"));
    EXPECT_EQ(storage["c"].get(), copy.get());
    EXPECT_EQ((*storage["c"]).value<int>(), 1);
    EXPECT_TRUE(storage["d/e"] == nullptr && storage["c"] != nullptr && storage["c"] == copy);
    EXPECT_EQ(refusal([&] { storage["a"] = storage["missing"]; }).second, "set(..)\n");
    EXPECT_EQ(refusal([&] { storage["x"] = storage.get("a"), storage["x/y"] = storage["x"]; }).second,
              "set(..)\n");
    EXPECT_THAT(keys(storage), ElementsAre("a", "c", "x"));
}

TEST(GroupItem, OwnsItsText)
{
    const auto rest = discriminate("first/second/third").next();
    EXPECT_EQ(rest.item(), "second");
    EXPECT_EQ(rest.next().item(), "third");
    EXPECT_TRUE(rest.isValid() && rest.hasNext() && !rest.next().hasNext());
    EXPECT_FALSE(rest.next().next().isValid());
    for (const char* id : {"", "/", "/a", "a/", "a//b"})
        EXPECT_FALSE(discriminate(id).isValid()) << id;
}

TEST(DataStorage, MakesTheGroupsOnAPath)
{
    Storage storage;
    storage.set("site/camera/gain", number(3));
    storage.set("site/camera/mode", number(4));
    EXPECT_THAT(keys(storage), ElementsAre("site"));
    EXPECT_EQ(storage.get("site/camera")->value<Storage>().size(), 2u);
    EXPECT_EQ(storage.get("site/camera/gain")->value<int>(), 3);
    EXPECT_EQ(storage["site/camera/mode"]->value<int>(), 4);
    EXPECT_EQ(storage.get("site/lens/gain"), nullptr);
}

TEST(DataStorage, RefusesInvalidIds)
{
    Storage storage;
    for (const char* id : {"", "/", "/a", "a/", "a//b"}) {
        EXPECT_EQ(refusal([&] { storage.get(id); }), Refusal("invalid id", "get(..)\n")) << id;
        EXPECT_EQ(refusal([&] { storage[id]; }), Refusal("invalid id", "operator[](..)\n")) << id;
        EXPECT_EQ(refusal([&] { storage.set(id, number(1)); }), Refusal("invalid id", "set(..)\n")) << id;
    }
    EXPECT_EQ(storage.size(), 0u);
}

TEST(DataStorage, RefusesPathsThroughValuesThatAreNoGroups)
{
    Storage storage;
    storage.set("a/b", number(1));
    const std::string message = std::string("not a valid storage type: b\ntype: ") + typeid(int).name() +
                                "\nexpected type: " + typeid(Storage).name();
    EXPECT_EQ(refusal([&] { storage.get("a/b/c"); }), Refusal(message, "get(..)\n"));
    EXPECT_EQ(refusal([&] { storage["a/b/c"]; }), Refusal(message, "operator[](..)\n"));
    EXPECT_EQ(refusal([&] { storage.set("a/b/c/d", number(1)); }), Refusal(message, "set(..)\n"));
    EXPECT_THROW(storage.set("a/c", nullptr), Exception);
    EXPECT_EQ(storage.get("a")->value<Storage>().size(), 1u);
}

TEST(DataStorage, RefusesToHoldItself)
{
    Storage storage;
    storage.set("outer/inner/x", number(1));
    const auto outer = storage.get("outer");
    EXPECT_THROW(storage.set("outer/again", outer), Exception);
    EXPECT_THROW(storage.set("outer/inner/again", outer), Exception);
    EXPECT_THROW(outer->value<Storage>().set("new/again", outer), Exception);
    EXPECT_THAT(keys(outer->value<Storage>()), ElementsAre("inner"));

    storage.set("copy", Variant::create(storage)); // a copy is another storage
    EXPECT_EQ(storage.get("copy/outer/inner/x")->value<int>(), 1);
    storage.set("outer", storage["outer/inner"]); // the value's own place goes away meanwhile
    EXPECT_EQ(storage.get("outer/x")->value<int>(), 1);
}

TEST(DataStorage, CopiesHaveTheirOwnGroupsAndShareTheOtherValues)
{
    Storage storage;
    storage.set("group/x", number(1));
    storage.set("y", number(2));
    storage.set("twin", storage.get("group"));
    Storage copy(storage);
    EXPECT_EQ(copy, storage);
    EXPECT_EQ(copy.get("group/x"), storage.get("group/x"));
    copy.set("group/z", number(3));
    EXPECT_EQ(copy.get("twin/z")->value<int>(), 3) << "one group in two places stays one";
    EXPECT_EQ(storage.get("group/z"), nullptr);
    EXPECT_NE(copy, storage);

    const std::unique_ptr<Storage> clone(storage.clone());
    storage.clear();
    EXPECT_EQ(clone->get("group/x")->value<int>(), 1);
    storage = *clone;
    storage = *&storage;
    EXPECT_EQ(storage, *clone);
}

TEST(DataStorage, IsEmptyAndUsableAfterAMove)
{
    Storage storage;
    storage.set("x", number(1));
    const Storage taken(std::move(storage));
    EXPECT_EQ(taken.size(), 1u);
    EXPECT_EQ(storage.size(), 0u);
    EXPECT_EQ(storage.find("x"), storage.end());
    storage.set("a/b", number(2));
    EXPECT_EQ(storage.get("a/b")->value<int>(), 2);
}

TEST(DataStorage, HoldsTreesOfAnyDepth)
{
    const std::string path = deepPath(100000);
    Storage storage;
    storage.set(path, number(7));
    EXPECT_EQ(storage.get(path)->value<int>(), 7);
    Storage copy(storage);
    EXPECT_EQ(copy[path]->value<int>(), 7);
    EXPECT_TRUE(copy == storage);
    EXPECT_TRUE(copy.satisfiesQuery(storage));
    EXPECT_TRUE(copy.satisfiesQuery({{"a", storage.get("a")}}));
    copy.set(path, number(8));
    EXPECT_FALSE(copy == storage);
    EXPECT_FALSE(copy.satisfiesQuery(storage));
    storage.set("a", number(1)); // drops the whole branch
    auto holder = Variant::create(std::move(copy));
    holder.reset();
}

TEST(DataStorage, WalksGroupsInManyPlacesOnce)
{
    // 2^60 paths lead to the leaf.
    auto group = Variant::create(Storage());
    group->value<Storage>().set("leaf", number(1));
    for (int i = 0; i < 60; ++i) {
        auto outer = Variant::create(Storage());
        outer->value<Storage>().set("a", group);
        outer->value<Storage>().set("b", group);
        group = outer;
    }
    const Storage copy = group->value<Storage>();
    EXPECT_TRUE(copy == group->value<Storage>());
    EXPECT_TRUE(copy.satisfiesQuery(group->value<Storage>()));
}

TEST(DataStorage, SatisfiesQueriesForSomeOfItsEntries)
{
    Storage storage;
    storage.set("site/camera/gain", number(3));
    storage.set("site/name", Variant::create("roof"));
    EXPECT_TRUE(storage.satisfiesQuery(Storage()));
    EXPECT_TRUE(storage.satisfiesQuery({{"site/camera/gain", number(3)}, {"site/name", nullptr}}));
    EXPECT_FALSE(storage.satisfiesQuery({{"site/camera/gain", number(4)}}));
    EXPECT_FALSE(storage.satisfiesQuery({{"site/camera/gain", Variant::create(3u)}})) << "another type";
    for (const char* id : {"", "site//name", "site/name/x", "town"})
        EXPECT_FALSE(storage.satisfiesQuery({{id, nullptr}})) << id;

    Storage query;
    query.set("site/camera/gain", number(3));
    EXPECT_TRUE(storage.satisfiesQuery(query));
    EXPECT_TRUE(storage.satisfiesQuery({{"site", query.get("site")}}));
    query.set("site/camera/mode", number(3));
    EXPECT_FALSE(storage.satisfiesQuery(query));
}
