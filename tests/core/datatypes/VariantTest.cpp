#include "core/datatypes/Variant.h"

#include "core/Exception.h"
#include "core/datatypes/DataStorage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace velmo::exp;

namespace {

using Bytes = std::vector<unsigned char>;
using Storage = DataStorage<std::string>;

template <class Call>
std::string messageOf(Call call, const std::string& function)
{
    try {
        call();
    } catch (const Exception& error) {
        EXPECT_THAT(error.location(), testing::EndsWith(": " + function + "(..)\n"));
        return error.what();
    }
    return "nothing thrown";
}

std::string textOf(const std::string& type, const std::string& text)
{
    return Variant::fromString(type, text)->toString();
}

Bytes serialized(const std::shared_ptr<Variant>& value, Endian endian)
{
    Bytes bytes(value->serialize(endian, nullptr));
    EXPECT_EQ(value->serialize(endian, reinterpret_cast<char*>(bytes.data())), bytes.size());
    return bytes;
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
    EXPECT_EQ(Variant::create("text")->value<std::string>(), "text");

    const std::string message = std::string("Variant-type (") + typeid(int).name() + ")!= Template-type (" +
                                typeid(Bytes).name() + ")";
    EXPECT_EQ(messageOf([] { Variant::create(1)->value<Bytes>(); }, "value"), message);
}

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

TEST(Variant, IsCreatedFromWhateverItCanHold)
{
    createFromLvalues<bool, std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t,
                      std::uint32_t, std::int64_t, std::uint64_t, float, double, std::string, Bytes,
                      Storage>();
    EXPECT_EQ(Variant::create(-5LL)->value<std::int64_t>(), -5);
    EXPECT_EQ(Variant::create(5ULL)->value<std::uint64_t>(), 5U);
    EXPECT_EQ(Variant::create('a')->getTypeDescriptionName(), std::is_signed_v<char> ? "int8" : "uint8");
    EXPECT_EQ(Variant::create<Bytes>({1, 2})->value<Bytes>(), (Bytes{1, 2}));
    const Variant_<Bytes> bytes(Bytes{3});
    Variant_<Bytes> copy(bytes);
    copy.value<Bytes>().push_back(4);
    EXPECT_EQ(bytes.value<Bytes>(), Bytes{3});
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
        EXPECT_EQ(messageOf([&] { value->toDouble(); }, "convert"),
                  std::string(value->getTypeInfo().name()) + " is not convertible to d");
        EXPECT_THROW(value->toBool(), Exception);
        EXPECT_THROW(value->toUnsignedInt8(), Exception);
    }
    EXPECT_TRUE(bytes->isContainer());
    EXPECT_FALSE(storage->isContainer());
    EXPECT_TRUE(real->isArithmetic() && real->isFundamental() && real->isFloatingPoint());
    EXPECT_FALSE(real->isIntegral() || real->isClass() || real->isContainer());
    EXPECT_EQ(bytes->getTypeDescriptionName(), "uint8[]");
    EXPECT_EQ(storage->getTypeDescriptionName(), "group");
    EXPECT_EQ(real->sizeofT(), 8u);

    EXPECT_EQ(messageOf([&] { storage->toString(); }, "toStringTimpl"),
              std::string("type '") + typeid(Storage).name() + "' can not be serialized to string");
    EXPECT_THROW(storage->serialize(Endian::Native, nullptr), Exception);
}

TEST(Variant, ReadsEveryItemTypeFromText)
{
    EXPECT_TRUE(Variant::fromString("bool", "true")->value<bool>());
    EXPECT_EQ(Variant::fromString("int8", "-128")->value<std::int8_t>(), -128);
    EXPECT_EQ(Variant::fromString("uint8", "255")->value<std::uint8_t>(), 255);
    EXPECT_EQ(Variant::fromString("int16", "-32768")->value<std::int16_t>(), -32768);
    EXPECT_EQ(Variant::fromString("uint16", "65535")->value<std::uint16_t>(), 65535);
    EXPECT_EQ(Variant::fromString("int32", "-2147483648")->value<std::int32_t>(), INT32_MIN);
    EXPECT_EQ(Variant::fromString("uint32", "4294967295")->value<std::uint32_t>(), UINT32_MAX);
    EXPECT_EQ(Variant::fromString("int64", "-9223372036854775808")->value<std::int64_t>(), INT64_MIN);
    EXPECT_EQ(Variant::fromString("uint64", "18446744073709551615")->value<std::uint64_t>(), UINT64_MAX);
    EXPECT_EQ(Variant::fromString("float", "0.1")->value<float>(), 0.1f);
    EXPECT_EQ(Variant::fromString("double", "-1.5e-3")->value<double>(), -0.0015);
    EXPECT_EQ(Variant::fromString("string", " a b ")->value<std::string>(), " a b ");
    EXPECT_EQ(Variant::fromString("string", "")->value<std::string>(), "");
    EXPECT_EQ(Variant::fromString("uint8[]", "")->value<Bytes>(), Bytes());
    EXPECT_EQ(Variant::fromString("uint8[]", "\n1, 0x2a 0xFF ,007\t#0a0B0C,#FFFFFF ")->value<Bytes>(),
              (Bytes{1, 42, 255, 7, 10, 11, 12, 255, 255, 255}));
}

TEST(Variant, RefusesTextThatIsNotWhollyAValue)
{
    for (const auto& [type, text] : std::vector<std::pair<std::string, std::string>>{
             {"bool", "TRUE"},
             {"bool", ""},
             {"int8", "128"},
             {"uint8", "-1"},
             {"uint8", "256"},
             {"int16", "1.0"},
             {"int32", "5x"},
             {"int32", " 5"},
             {"int32", "+5"},
             {"uint32", "4294967296"},
             {"uint32", "0x10"},
             {"int64", "9223372036854775808"},
             {"uint64", "-1"},
             {"uint64", "18446744073709551616"},
             {"float", "1e39"},
             {"float", "1,5"},
             {"double", "1e999"},
             {"double", ""},
             {"double", "0x1p3"},
             {"uint8[]", "256"},
             {"uint8[]", "1,,2"},
             {"uint8[]", ",1"},
             {"uint8[]", "1,"},
             {"uint8[]", "0x100"},
             {"uint8[]", "0x"},
             {"uint8[]", "-1"},
             {"uint8[]", "#12345"},
             {"uint8[]", "#12345G"},
             {"uint8[]", "#123456 7#"},
             {"uint8[]", "#1234567"},
             {"uint8[]", "1;2"},
             {"group", ""},
             {"int", "5"},
             {"", "5"},
         }) {
        const auto message = messageOf([&, t = type, v = text] { Variant::fromString(t, v); }, "fromString");
        EXPECT_THAT(message, testing::HasSubstr(type)) << type << ": " << text;
        EXPECT_THAT(message, testing::HasSubstr("'" + text + "'")) << type;
        EXPECT_NE(message, "nothing thrown") << type << ": " << text;
    }
}

TEST(Variant, WritesTextThatReadsBackTheSame)
{
    EXPECT_EQ(textOf("bool", "false"), "false");
    EXPECT_EQ(textOf("int8", "-7"), "-7") << "a number, not a character";
    EXPECT_EQ(textOf("float", "0.1000"), "0.1");
    EXPECT_EQ(textOf("double", "0.30000000000000004"), "0.30000000000000004");
    EXPECT_EQ(textOf("uint8[]", "0x0A,#0B0C0D"), "10 11 12 13");
    EXPECT_EQ(textOf("string", "x"), "x");
}

TEST(Variant, ConvertsNumbersWithinTheirRange)
{
    EXPECT_EQ(Variant::create(255)->toUnsignedInt8(), 255);
    EXPECT_EQ(Variant::create(-1)->toSignedInt64(), -1);
    EXPECT_EQ(Variant::create(-2.9)->toSignedInt8(), -2);
    EXPECT_EQ(Variant::create(-0.9)->toUnsignedInt8(), 0);
    EXPECT_EQ(Variant::create(-9223372036854775808.0)->toSignedInt64(), INT64_MIN);
    EXPECT_EQ(Variant::create(true)->toFloat(), 1.0f);
    EXPECT_TRUE(Variant::create(0.5)->toBool());
    EXPECT_TRUE(std::isinf(Variant::create(std::numeric_limits<double>::infinity())->toFloat()));

    EXPECT_EQ(messageOf([] { Variant::create(256)->toUnsignedInt8(); }, "convert"),
              "256 is outside the range 0 to 255");
    EXPECT_THROW(Variant::create(-1)->toUnsignedInt64(), Exception);
    EXPECT_THROW(Variant::create(128)->toSignedInt8(), Exception);
    EXPECT_THROW(Variant::create(std::uint64_t{1} << 63)->toSignedInt64(), Exception);
    EXPECT_THROW(Variant::create(9223372036854775808.0)->toSignedInt64(), Exception);
    EXPECT_THROW(Variant::create(18446744073709551616.0f)->toUnsignedInt64(), Exception);
    EXPECT_THROW(Variant::create(-1.0)->toUnsignedInt32(), Exception);
    EXPECT_THROW(Variant::create(std::nan(""))->toSignedInt32(), Exception);
    EXPECT_THROW(Variant::create(1e39)->toFloat(), Exception);
}

TEST(Variant, HasABinaryFormInBothByteOrders)
{
    const bool swapped = Endianness::isBigEndianSystem();
    const Endian little = swapped ? Endian::Swapped : Endian::Native;
    const Endian big = swapped ? Endian::Native : Endian::Swapped;
    EXPECT_EQ(serialized(Variant::create(0x01020304), little), (Bytes{4, 3, 2, 1}));
    EXPECT_EQ(serialized(Variant::create(0x01020304), big), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(serialized(Variant::create(1.0), big), (Bytes{0x3F, 0xF0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(serialized(Variant::create("ab"), little), (Bytes{2, 0, 0, 0, 'a', 'b'}));
    EXPECT_EQ(serialized(Variant::create(Bytes{7, 8}), big), (Bytes{0, 0, 0, 2, 7, 8}));

    std::size_t consumed = 99;
    EXPECT_EQ(Variant::deserialize("int16", big, {0xFF, 0xFE, 0x55}, consumed)->value<std::int16_t>(), -2);
    EXPECT_EQ(consumed, 2u);
    EXPECT_TRUE(Variant::deserialize("bool", little, {1}, consumed)->value<bool>());
    EXPECT_EQ(Variant::deserialize("uint8[]", little, {2, 0, 0, 0, 7, 8, 9}, consumed)->value<Bytes>(),
              (Bytes{7, 8}));
    EXPECT_EQ(consumed, 6u);
    std::vector<char> chars(4);
    Variant::create(7)->serialize(big, chars.data());
    EXPECT_EQ(Variant::deserialize("int32", big, chars.data(), chars.size(), consumed)->value<int>(), 7);
    EXPECT_EQ(consumed, 4u);
    EXPECT_THROW(Variant::deserialize("bool", little, {2}, consumed), Exception);
    EXPECT_THROW(Variant::deserialize("int32", little, {1, 2, 3}, consumed), Exception);
    EXPECT_THROW(Variant::deserialize("string", little, {0xFF, 0xFF, 0xFF, 0xFF, 'a'}, consumed), Exception);
    EXPECT_THROW(Variant::deserialize("int24", little, {1, 2, 3}, consumed), Exception);
}

TEST(Variant, EqualsTheSameValueOfTheSameType)
{
    EXPECT_TRUE(Variant::create(1)->equal(Variant::create(1)));
    EXPECT_FALSE(Variant::create(1)->equal(Variant::create(2)));
    EXPECT_FALSE(Variant::create(1)->equal(Variant::create(1u)));
    EXPECT_FALSE(Variant::create(1)->equal(nullptr));
    EXPECT_TRUE(Variant::create(Storage())->equal(Variant::create(Storage())));

    Variant_<std::string> holder("old");
    holder.move("new");
    EXPECT_EQ(holder.value<std::string>(), "new");
}
