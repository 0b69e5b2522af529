#include "core/datatypes/Variant.h"

#include "core/datatypes/DataStorage.h"
#include "core/memory/MemoryAcsii.h"
#include "tests/Support.h"

using namespace velmo::exp;

namespace {

using Bytes = std::vector<unsigned char>;
using Storage = DataStorage<std::string>;

const auto serialized = [](const std::shared_ptr<Variant>& value, Endian endian) {
    Bytes bytes(value->serialize(endian, nullptr));
    EXPECT_EQ(value->serialize(endian, reinterpret_cast<char*>(bytes.data())), bytes.size());
    return bytes;
};

/// Created from an lvalue, with and without its type named.
template <class... T>
void createFromLvalues()
{
    const auto create = [](auto value) {
        using Held = decltype(value);
        EXPECT_EQ(Variant::create<Held>(value)->template value<Held>(), value);
        EXPECT_EQ(Variant::create(value)->template value<Held>(), value);
    };
    (create(T{}), ...);
}

} // namespace

TEST(Variant, HoldsACopyAndGivesItBackAsItsType)
{
    Bytes colours{1, 2, 3};
    const auto held = Variant::create(colours);
    colours[0] = 9;
    EXPECT_EQ(held->value<Bytes>(), (Bytes{1, 2, 3}));
    held->value<Bytes>().push_back(4);
    EXPECT_EQ(std::as_const(*held).value<Bytes>().size(), 4u);

    Variant_<Bytes> bytes(Bytes{3}), copy(bytes);
    copy.move(Bytes{5});
    EXPECT_EQ(bytes.value<Bytes>(), Bytes{3});
    EXPECT_EQ(copy.value<Bytes>(), Bytes{5});

    EXPECT_EQ(refusal([] { Variant::create(1)->value<Bytes>(); }),
              (Refusal{std::string("Variant-type (") + typeid(int).name() + ")!= Template-type (" +
                           typeid(Bytes).name() + ")",
                       "value"}));
}

TEST(Variant, IsCreatedFromWhateverItCanHold)
{
    createFromLvalues<bool, std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t,
                      std::uint32_t, std::int64_t, std::uint64_t, float, double, std::string, Bytes,
                      Storage>();
    EXPECT_EQ(Variant::create("text")->value<std::string>(), "text");
    EXPECT_EQ(Variant::create(-5LL)->value<std::int64_t>(), -5);
    EXPECT_EQ(Variant::create(5ULL)->value<std::uint64_t>(), 5U);
    EXPECT_EQ(Variant::create('a')->getTypeDescriptionName(), std::is_signed_v<char> ? "int8" : "uint8");
    EXPECT_EQ(Variant::create<Bytes>({1, 2})->value<Bytes>(), (Bytes{1, 2}));
}

TEST(Variant, SaysWhatKindOfTypeItHolds)
{
    const auto storage = Variant::create(Storage()), bytes = Variant::create(Bytes()),
               real = Variant::create(1.5);
    for (const auto& value : {storage, bytes}) {
        EXPECT_FALSE(value->isArithmetic() || value->isArray() || value->isFundamental() ||
                     value->isIntegral() || value->isFloatingPoint() || value->isConst());
        EXPECT_TRUE(value->isClass() && value->isStreamable() && value->isEqualComparable() &&
                    value->isSerializable());
        const Refusal wanted{value->getTypeInfo().name() + std::string(" is not convertible to "), "convert"};
        EXPECT_EQ(refusal([&] { value->toDouble(); }), (Refusal{wanted.message + "d", "convert"}));
        EXPECT_EQ(refusal([&] { value->toBool(); }), (Refusal{wanted.message + "b", "convert"}));
    }
    EXPECT_TRUE(bytes->isContainer() && real->isArithmetic() && real->isFundamental() &&
                real->isFloatingPoint() && Variant::create(1)->isIntegral());
    EXPECT_FALSE(storage->isContainer() || real->isIntegral() || real->isClass() || real->isContainer());
    EXPECT_EQ(bytes->getTypeDescriptionName() + storage->getTypeDescriptionName(), "uint8[]group");
    EXPECT_TRUE(real->sizeofT() == 8 && real->address() == real->addressConst());
    EXPECT_EQ(refusal([&] { storage->toString(); }),
              (Refusal{std::string("type '") + typeid(Storage).name() + "' can not be serialized to string",
                       "toStringTimpl"}));
    EXPECT_THROW(storage->serialize(Endian::Native, nullptr), Exception);
}

TEST(Variant, ReadsTextOfEveryTypeAndWritesTheShortestThatReadsTheSame)
{
    const auto written = [](const std::string& type, const std::string& text) {
        const auto value = Variant::fromString(type, text);
        EXPECT_EQ(value->getTypeDescriptionName(), type);
        return value->toString();
    };
    for (const std::string row : {"bool true", "bool false", "int8 -128", "uint8 255", "int16 -32768",
                                  "uint16 65535", "int32 -2147483648", "uint32 4294967295",
                                  "int64 -9223372036854775808", "uint64 18446744073709551615",
                                  "double 0.30000000000000004", "string  a b ", "string ", "uint8[] "}) {
        const std::size_t blank = row.find(' ');
        EXPECT_EQ(written(row.substr(0, blank), row.substr(blank + 1)), row.substr(blank + 1));
    }
    EXPECT_EQ(written("float", "0.1000"), "0.1");
    EXPECT_EQ(written("double", "-1.5e-3"), "-0.0015");
    EXPECT_EQ(written("uint8[]", "\n1, 0x2a 0xFF ,007\t#0a0B0C,#FFFFFF "), "1 42 255 7 10 11 12 255 255 255");
    EXPECT_EQ(Variant::fromString("float", "0.1")->value<float>(), 0.1f);
    Bytes none;
    const std::vector<char> shorter{'#', '1', '2', '3', '4', '5'}; // behind it there is nothing to be read
    EXPECT_FALSE(MemoryAcsii::parse({shorter.data(), shorter.size()}, none));
}

TEST(Variant, RefusesTextThatIsNotWhollyAValue)
{
    for (const auto& [type, texts] : std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"bool", {"TRUE", "1", ""}},
             {"int8", {"128", "-129"}},
             {"uint8", {"-1", "256"}},
             {"int16", {"1.0", "32768"}},
             {"int32", {"5x", " 5", "5 ", "+5", "2147483648"}},
             {"uint32", {"4294967296", "0x10"}},
             {"int64", {"9223372036854775808"}},
             {"uint64", {"-1", "18446744073709551616"}},
             {"float", {"1e39", "1,5"}},
             {"double", {"1e999", "", "0x1p3"}},
             {"uint8[]",
              {"256", "1,,2", ",1", "1,", "0x100", "0x", "-1", "#12345", "#12345G", "#123456 7#", "#1234567",
               "1;2"}},
             {"group", {""}},
             {"int", {"5"}},
             {"", {"5"}}})
        for (const std::string& text : texts) {
            const Refusal refused = refusal([&, t = type] { Variant::fromString(t, text); });
            EXPECT_EQ(refused.function, "fromString") << type << ": " << text;
            EXPECT_THAT(refused.message, HasSubstr(type)) << text;
            EXPECT_THAT(refused.message, HasSubstr("'" + text + "'")) << type;
        }
    const std::string longText(100, 'x');
    EXPECT_EQ(refusal([&] { Variant::fromString("bool", longText); }).message,
              "'" + longText.substr(0, 80) + "...' is not a value of type bool");
}

TEST(Variant, ConvertsNumbersWithinTheirRange)
{
    EXPECT_TRUE(Variant::create(255)->toUnsignedInt8() == 255 &&
                Variant::create(-0.9)->toUnsignedInt8() == 0);
    EXPECT_EQ(Variant::create(-2.9)->toSignedInt8(), -2);
    EXPECT_EQ(Variant::create(32767.9)->toSignedInt16(), 32767);
    EXPECT_EQ(Variant::create(-9223372036854775808.0)->toSignedInt64(), INT64_MIN);
    EXPECT_EQ(Variant::create(true)->toFloat(), 1.0f);
    EXPECT_TRUE(Variant::create(0.5)->toBool() && !Variant::create(0)->toBool());
    EXPECT_TRUE(std::isinf(Variant::create(std::numeric_limits<double>::infinity())->toFloat()));

    EXPECT_EQ(refusal([] { Variant::create(256)->toUnsignedInt8(); }),
              (Refusal{"256 is outside the range 0 to 255", "convert"}));
    EXPECT_THROW(Variant::create(-1)->toUnsignedInt64(), Exception);
    for (const auto& large :
         {Variant::create(std::uint64_t{1} << 63), Variant::create(9223372036854775808.0)})
        EXPECT_THROW(large->toSignedInt64(), Exception);
    EXPECT_THROW(Variant::create(18446744073709551616.0f)->toUnsignedInt64(), Exception);
    EXPECT_THROW(Variant::create(-1.0)->toUnsignedInt32(), Exception);
    EXPECT_THROW(Variant::create(std::nan(""))->toSignedInt32(), Exception);
    EXPECT_THROW(Variant::create(1e39)->toFloat(), Exception);
}

TEST(Variant, HasABinaryFormInBothByteOrders)
{
    const bool swapped = Endianness::isBigEndianSystem();
    std::size_t consumed = 99;
    const Endian little = swapped ? Endian::Swapped : Endian::Native,
                 big = swapped ? Endian::Native : Endian::Swapped;
    const std::tuple<std::shared_ptr<Variant>, Endian, Bytes> forms[] = {
        {Variant::create(0x01020304), little, {4, 3, 2, 1}},
        {Variant::create(0x01020304), big, {1, 2, 3, 4}},
        {Variant::create(std::int16_t{-2}), big, {0xFF, 0xFE}},
        {Variant::create(1.0), big, {0x3F, 0xF0, 0, 0, 0, 0, 0, 0}},
        {Variant::create(true), little, {1}},
        {Variant::create("ab"), little, {2, 0, 0, 0, 'a', 'b'}},
        {Variant::create(Bytes{7, 8}), big, {0, 0, 0, 2, 7, 8}}};
    for (const auto& [value, endian, bytes] : forms) {
        EXPECT_EQ(serialized(value, endian), bytes);
        Bytes more = bytes;
        more.push_back(0x55); // not its own
        const std::string type = value->getTypeDescriptionName();
        EXPECT_TRUE(Variant::deserialize(type, endian, more, consumed)->equal(value));
        EXPECT_EQ(consumed, bytes.size());
        const std::vector<char> chars(bytes.begin(), bytes.end());
        EXPECT_TRUE(Variant::deserialize(type, endian, chars.data(), chars.size(), consumed)->equal(value));
    }
    for (const auto& [type, bytes] : std::map<std::string, Bytes>{{"bool", {2}},
                                                                  {"int32", {1, 2, 3}},
                                                                  {"string", {0xFF, 0xFF, 0xFF, 0xFF, 'a'}},
                                                                  {"int24", {1, 2, 3}}})
        EXPECT_THROW(Variant::deserialize(type, little, bytes, consumed), Exception) << type;
}

TEST(Variant, EqualsTheSameValueOfTheSameType)
{
    const auto one = Variant::create(1);
    EXPECT_TRUE(one->equal(Variant::create(1)));
    EXPECT_TRUE(Variant::create(Storage())->equal(Variant::create(Storage())));
    EXPECT_FALSE(one->equal(Variant::create(2)) || one->equal(Variant::create(1u)) || one->equal(nullptr));
}
