#include "core/datatypes/DataStorage.h"

#include "tests/Support.h"

using namespace velmo::exp;

using Storage = DataStorage<std::string>;

const auto number = [](int value) { return Variant::create(value); };

/// Each followed by a comma.
const auto keys = [](const Storage& storage) {
    std::string result;
    for (const auto& [key, value] : storage)
        result += key + ",";
    return result;
};

TEST(GroupItem, OwnsItsText)
{
    const auto rest = discriminate("first/second/third").next();
    EXPECT_TRUE(rest.item() == "second" && rest.isValid() && rest.hasNext());
    EXPECT_TRUE(rest.next().item() == "third" && !rest.next().hasNext() && !rest.next().next().isValid());
    for (const char* id : {"", "/", "/a", "a/", "a//b"})
        EXPECT_FALSE(discriminate(id).isValid()) << id;
}

TEST(DataStorage, KeepsItsEntriesInByteOrder)
{
    static_assert(std::is_same_v<Storage::iterator, Storage::const_iterator>);
    Storage storage;
    for (const char* key : {"b", "\xC3\xA4", "B", "a b", "a"})
        storage.set(key, number(1));
    EXPECT_EQ(keys(storage), "B,a,a b,b,\xC3\xA4,");
    EXPECT_EQ(storage.size(), 5u);
    storage.clear();
    EXPECT_EQ(storage.begin(), storage.end());
}

TEST(DataStorage, SharesValuesReplacesThemAndMakesGroups)
{
    Storage storage;
    const auto one = number(1), two = number(2);
    storage.set("x", one);
    EXPECT_EQ(storage.get("x"), one);
    storage.set("x", two);
    EXPECT_EQ(storage["x"], two);
    storage.set("site/camera/gain", one);
    storage.set("site/camera/mode", two);
    EXPECT_EQ(storage.get("site/camera")->value<Storage>().size(), 2u);
    EXPECT_EQ(std::as_const(storage)["site/camera/mode"], two);
    for (const char* id : {"y", "site/lens/gain"})
        EXPECT_TRUE(!storage.get(id) && storage[id] == nullptr && !std::as_const(storage)[id]) << id;
    EXPECT_EQ(keys(storage), "site,x,") << "asking made an entry";
}

TEST(DataStorage, AssignsThroughItsIndex)
{
    Storage storage;
    storage["a/b"] = number(1);
    storage["c"] = storage["a/b"];
    const std::shared_ptr<Variant> copy = storage["c"];
    EXPECT_TRUE(copy == storage.get("a/b") && storage["c"].get() == copy.get());
    EXPECT_EQ((*storage["c"]).value<int>() + storage["c"]->value<int>(), 2);
    EXPECT_TRUE(storage["c"] != nullptr && storage["c"] == copy);
    EXPECT_EQ(refusal([&] { storage["a"] = storage["missing"]; }).function, "set");
    storage["x"] = storage["a"];
    EXPECT_EQ(refusal([&] { storage["x/y"] = storage["x"]; }).function, "set"); // it would hold itself
    EXPECT_EQ(keys(storage), "a,c,x,");
}

TEST(DataStorage, RefusesInvalidIdsAndPathsThroughValuesThatAreNoGroups)
{
    Storage storage;
    storage.set("a/b", number(1));
    const std::string through = std::string("not a valid storage type: b\ntype: ") + typeid(int).name() +
                                "\nexpected type: " + typeid(Storage).name();
    for (const std::string key : {"", "/", "/a", "a/", "a//b", "a/b/c", "a/b/c/d"}) {
        const std::string message = key.rfind("a/b/", 0) == 0 ? through : "invalid id";
        EXPECT_EQ(refusal([&] { storage.get(key); }), (Refusal{message, "get"})) << key;
        EXPECT_EQ(refusal([&] { storage[key]; }), (Refusal{message, "operator[]"})) << key;
        EXPECT_EQ(refusal([&] { std::as_const(storage)[key]; }).message, message) << key;
        EXPECT_EQ(refusal([&] { storage.set(key, number(1)); }), (Refusal{message, "set"})) << key;
    }
    EXPECT_THROW(storage.set("a/c", nullptr), Exception);
    EXPECT_EQ(keys(storage.get("a")->value<Storage>()), "b,");
}

TEST(DataStorage, RefusesToHoldItself)
{
    Storage storage;
    storage.set("outer/inner/x", number(1));
    const auto outer = storage.get("outer");
    EXPECT_THROW(storage.set("outer/again", outer), Exception);
    EXPECT_THROW(storage.set("outer/inner/again", outer), Exception);
    EXPECT_THROW(outer->value<Storage>().set("new/again", outer), Exception);
    EXPECT_EQ(keys(outer->value<Storage>()), "inner,");

    storage.set("copy", Variant::create(storage)); // a copy is another storage
    EXPECT_EQ(storage.get("copy/outer/inner/x")->value<int>(), 1);
    storage.set("outer", storage["outer/inner"]); // the value's own place goes away meanwhile
    EXPECT_EQ(storage.get("outer/x")->value<int>(), 1);
}

TEST(DataStorage, CopiesHaveTheirOwnGroupsAndMovesLeaveNothing)
{
    Storage storage;
    storage.set("group/x", number(1));
    storage.set("y", number(2));
    storage.set("twin", storage.get("group"));
    Storage copy(storage);
    EXPECT_TRUE(copy == storage && copy.get("group/x") == storage.get("group/x"));
    copy.set("group/z", number(3));
    EXPECT_EQ(copy.get("twin/z")->value<int>(), 3) << "one group in two places stays one";
    EXPECT_EQ(storage.get("group/z"), nullptr);

    const std::unique_ptr<Storage> clone(storage.clone());
    Storage taken(std::move(storage));
    EXPECT_EQ(taken, *clone);
    EXPECT_TRUE(storage.size() == 0 && storage.find("y") == storage.end());
    storage.set("a/b", number(2));
    EXPECT_EQ(storage.get("a/b")->value<int>(), 2);
    storage = *clone;
    storage = *&storage;
    EXPECT_EQ(storage, *clone);
}

TEST(DataStorage, EqualsATreeOfTheSameIdsAndValues)
{
    // A digit for the value of each id.
    const auto tree = [](const std::vector<std::string>& entries) {
        Storage storage;
        for (const std::string& entry : entries)
            storage.set(entry.substr(1), number(entry[0]));
        return storage;
    };
    const Storage one = tree({"1a/b", "2c"});
    EXPECT_EQ(one, tree({"2c", "1a/b"}));
    for (const Storage& other :
         {tree({}), tree({"1a/b"}), tree({"1a/b", "2c", "3d"}), tree({"1a/b", "1a/c", "2c"}),
          tree({"1a/b", "2d"}), tree({"3a/b", "2c"}), tree({"1a", "2c"})})
        EXPECT_TRUE(one != other && other != one) << keys(other);
}

TEST(DataStorage, HoldsTreesOfAnyDepth)
{
    std::string path = "a";
    for (int i = 1; i < 100000; ++i)
        path += "/a";
    Storage storage;
    storage.set(path, number(7));
    EXPECT_EQ(storage.get(path)->value<int>(), 7);
    Storage copy(storage);
    EXPECT_TRUE(copy == storage && copy.satisfiesQuery(storage) &&
                copy.satisfiesQuery({{"a", storage.get("a")}}));
    copy.set(path, number(8));
    EXPECT_FALSE(copy == storage || copy.satisfiesQuery(storage));
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
    Storage storage, query;
    storage.set("site/camera/gain", number(3));
    storage.set("site/name", Variant::create("roof"));
    EXPECT_TRUE(storage.satisfiesQuery(query));
    EXPECT_TRUE(storage.satisfiesQuery({{"site/camera/gain", number(3)}, {"site/name", nullptr}}));
    EXPECT_FALSE(storage.satisfiesQuery({{"site/camera/gain", number(4)}}));
    EXPECT_FALSE(storage.satisfiesQuery({{"site/camera/gain", Variant::create(3u)}})) << "another type";
    for (const char* id : {"", "site//name", "site/name/x", "town"})
        EXPECT_FALSE(storage.satisfiesQuery({{id, nullptr}})) << id;

    query.set("site/camera/gain", number(3));
    EXPECT_TRUE(storage.satisfiesQuery(query));
    EXPECT_TRUE(storage.satisfiesQuery({{"site", query.get("site")}}));
    query.set("site/camera/mode", number(3));
    EXPECT_FALSE(storage.satisfiesQuery(query));
}
