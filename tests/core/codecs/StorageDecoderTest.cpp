#include "core/codecs/StorageDecoder.h"

#include "core/Exception.h"
#include "core/codecs/StorageDecoderIni.h"
#include "core/codecs/StorageDecoderXml.h"
#include "core/codecs/XmlCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

#include <tinyxml.h>

using namespace velmo::exp;
using testing::HasSubstr;

namespace {

using Bytes = std::vector<unsigned char>;
using Storage = DataStorage<std::string>;

constexpr int xml = StorageDecoder<Storage>::s32Xml;
constexpr int ini = StorageDecoder<Storage>::s32Ini;

std::pair<Storage, std::string> decode(const std::string& file, int format = xml)
{
    std::istringstream in(file);
    return StorageDecoder<Storage>(format).decode(in);
}

/// The tree below a root group of that content.
Storage decodeIn(const std::string& content)
{
    return decode("<group name=\"root\">" + content + "</group>").first;
}

/// The message a file is refused with.
std::string refusal(const std::string& file, int format = xml)
{
    try {
        decode(file, format);
    } catch (const Exception& error) {
        return error.what();
    }
    return "nothing thrown";
}

/// A message and the function named in the location.
using Refusal = std::pair<std::string, std::string>;

Refusal refusalAndFunction(const std::string& file, int format = xml)
{
    try {
        decode(file, format);
    } catch (const Exception& error) {
        const std::string& location = error.location();
        return {error.what(), location.substr(location.rfind(": ") + 2)};
    }
    return {"nothing thrown", ""};
}

std::string item(const std::string& name, const std::string& type, const std::string& text)
{
    return "<item name=\"" + name + "\" type=\"" + type + "\">" + text + "</item>";
}

std::string repeated(const std::string& text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

/// A file of a package instruction, an XML text and what follows it.
std::string package(const std::string& attributes, const std::string& text, const std::string& values = "")
{
    return "<?storage version=\"1\" " + attributes + " size=\"" + std::to_string(text.size()) + "\"?>\n" +
           text + values;
}

} // namespace

TEST(StorageDecoder, ChoosesTheFormatByItsFlag)
{
    const std::string file = "<group name=\"n\"><item name=\"a\" type=\"int32\">5</item></group>";
    for (const int format : {0, 1}) {
        const auto [storage, name] = decode(file, format);
        EXPECT_EQ(name, "n");
        EXPECT_EQ(storage.get("a")->value<int>(), 5);
    }
    EXPECT_EQ(decode("a = 5", ini).first.get("a")->value<std::int64_t>(), 5);
    EXPECT_EQ(refusalAndFunction(file, 2), Refusal("JSON support disabled", "decode(..)\n"));
    for (const int format : {7, -1})
        EXPECT_EQ(refusal(file, format),
                  "StorageDecoder encountered unsupported flag, flag was: " + std::to_string(format));
}

TEST(StorageDecoderXml, ReadsGroupsAndItems)
{
    const auto [storage, name] =
        decode("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- by hand -->\n"
               "<group name='Site &amp; more'>\n"
               "  <item name=\"gain\" type=\"uint16\"> 12 </item>\n"
               "  <!-- <item> in a comment --> some text\n"
               "  <group name=\"lens\">\n"
               "    <item name=\"label\" type=\"string\">35&#xb0; &lt;wide&gt; \xC3\xA4</item>\n"
               "    <group name=\"empty\"/>\n"
               "    <item name=\"none\" type=\"string\"/>\n"
               "  </group>\n"
               "  <item name=\"lens/x/y\" type=\"double\">0.5</item>\n"
               "  <item name=\"raw\" type=\"string\"><![CDATA[ <a&b> ]]></item>\n"
               "</group>\n");
    EXPECT_EQ(name, "Site & more");
    EXPECT_EQ(storage.size(), 3u);
    EXPECT_EQ(storage.get("gain")->value<std::uint16_t>(), 12);
    EXPECT_EQ(storage.get("lens/label")->value<std::string>(), "35\xC2\xB0 <wide> \xC3\xA4");
    EXPECT_EQ(storage.get("lens/empty")->value<Storage>().size(), 0u);
    EXPECT_EQ(storage.get("lens/none")->value<std::string>(), "");
    EXPECT_EQ(storage.get("lens/x/y")->value<double>(), 0.5);
    EXPECT_EQ(storage.get("raw")->value<std::string>(), " <a&b> ");

    std::istringstream whole("<group name=\"r\"/>\n");
    EXPECT_EQ(StorageDecoderXml::decode(whole).second, "r");
    EXPECT_FALSE(whole.fail()) << "the end of a text is no failure";
    EXPECT_EQ(decode("<group name=\"r\"/>"), std::pair(Storage(), std::string("r")));
    EXPECT_EQ(decodeIn(item("a", "int8", "1") + item("a", "string", "x")).get("a")->value<std::string>(),
              "x");
    EXPECT_EQ(decodeIn(item("a", "string", "\xB0")).get("a")->value<std::string>(), "\xB0") << "not UTF-8";
}

TEST(StorageDecoderXml, SkipsInstructionsAnywhere)
{
    const auto [storage, name] =
        decode("<?xml-stylesheet type='text/xsl' href=\"a>b.xsl\"?><?a version=\"?>"
               "<group name=\"r\"><?b <item> ?><item name=\"a\" type=\"int8\"><?c > ?>5<?d ?></item>"
               "<?XML?></group><?e ?>\n");
    EXPECT_EQ(name, "r");
    EXPECT_EQ(storage.size(), 1u);
    EXPECT_EQ(storage.get("a")->value<std::int8_t>(), 5);
}

TEST(StorageDecoderXml, TrimsValuesWhateverTheParsersSwitch)
{
    const bool condense = TiXmlBase::IsWhiteSpaceCondensed();
    for (const bool on : {true, false}) {
        TiXmlBase::SetCondenseWhiteSpace(on);
        const Storage storage = decodeIn("\n" + item("a", "int8", " \n5\t ") + " " +
                                         item("b", "bool", " true ") + item("c", "string", " x  y "));
        EXPECT_EQ(storage.get("a")->value<std::int8_t>(), 5);
        EXPECT_TRUE(storage.get("b")->value<bool>());
        EXPECT_EQ(storage.get("c")->value<std::string>(), on ? "x y" : " x  y ");
        EXPECT_THAT(refusal("<group name=\"r\">" + item("a", "int8", " ") + "</group>"), HasSubstr("''"));
    }
    TiXmlBase::SetCondenseWhiteSpace(condense);
}

TEST(StorageDecoder, LeavesTheExceptionMaskOfAStreamAsItWas)
{
    const std::string text = "<group name=\"r\"><item name=\"a\" type=\"int16\" size=\"2\"/></group>";
    for (const auto& [format, file, good] : {std::tuple(xml, std::string("<group name=\"r\"/>"), true),
                                             {xml, "<group", false},
                                             {xml, package("values=\"binary\"", text, "ab"), true},
                                             {xml, package("values=\"binary\"", text, "a"), false},
                                             {ini, "a = 1", true},
                                             {ini, "a", false}}) {
        std::istringstream in(file);
        const auto mask = std::ios::failbit | std::ios::eofbit;
        in.exceptions(mask);
        if (good)
            EXPECT_NO_THROW(StorageDecoder<Storage>(format).decode(in)) << file;
        else
            EXPECT_THROW(StorageDecoder<Storage>(format).decode(in), Exception) << file;
        EXPECT_EQ(in.exceptions(), mask);
        EXPECT_TRUE(in.good());
    }
}

TEST(StorageDecoderXml, NamesWhatIsMissing)
{
    const Refusal noXml("Inputstream does not contain any XML.", "decode(..)\n");
    for (const char* file :
         {"", "<group name=\"a\">", "<group name=\"a\"></grou>", "<group name=a/>", "<group name=\"a\"",
          "<group name=\"a\"></group></group>", "<", "<!-- ", "<group name=\"&#x;\"/>", "<?xml",
          "<?xml a=", "<?pi ><group name=\"a\"/>", "<?\?><group name=\"a\"/>", "hello"})
        EXPECT_EQ(refusalAndFunction(file), noXml) << file;
    EXPECT_EQ(refusalAndFunction("<!-- empty -->"), Refusal("Root element not found!", "decode(..)\n"));
    EXPECT_EQ(refusalAndFunction("<tree name=\"a\"/>"),
              Refusal("Root group element not found!", "decode(..)\n"));
    EXPECT_EQ(refusalAndFunction("<group name=\"a\"><value name=\"x\">3</value></group>"),
              Refusal("Unknown node type!", "decodeStorage(..)\n"));
    EXPECT_EQ(refusalAndFunction("<group name=\"a\"><group name=\"\"/></group>"),
              Refusal("invalid id", "set(..)\n"));
    EXPECT_THROW(decodeIn("<value>3</value>"), std::logic_error) << "a missing name comes first";
    EXPECT_EQ(refusal("<group name=\"a\"><group name=\"/\"><value name=\"x\"/></group></group>"),
              "Unknown node type!")
        << "a group is decoded before it is set";
    for (const char* content : {"<item type=\"int8\">1</item>", "<item name=\"a\">1</item>", "<group/>"})
        EXPECT_THROW(decodeIn(content), std::logic_error) << content;
    EXPECT_THROW(decode("<group/>"), std::logic_error);
    EXPECT_THAT(refusal("<group name=\"r\">" + item("a", "int8", "") + "</group>"), HasSubstr("int8"));
}

TEST(StorageDecoderXml, RefusesStreamsThatCanNotBeRead)
{
    std::istringstream failed("<group name=\"a\"/>");
    failed.setstate(std::ios::failbit);
    EXPECT_THROW(StorageDecoderXml::decode<Storage>(failed), Exception);
    EXPECT_EQ((failed.clear(), failed.tellg()), 0) << "read before it was looked at";

    std::ifstream folder(testing::TempDir());
    try {
        StorageDecoderXml::decode<Storage>(folder);
        FAIL() << "nothing thrown";
    } catch (const Exception& error) {
        EXPECT_STREQ(error.what(), "Inputstream not readable!");
    }
}

TEST(StorageDecoderXml, RefusesTextBeyondTheLimits)
{
    const auto nested = [](int depth) {
        return repeated("<group name=\"a\">", depth) + repeated("</group>", depth);
    };
    EXPECT_NO_THROW(decode(nested(500)));
    EXPECT_THAT(refusal(nested(501)), HasSubstr("limit of 500"));
    EXPECT_THAT(refusal(repeated("<group name=\"a\">", 100000)), HasSubstr("limit of 500"));
    EXPECT_NO_THROW(decode(repeated("<!-- <a> -->", 100) + nested(1))) << "depth of what is no element";

    const auto attributes = [](int count) {
        std::string text = "<group name=\"a\"";
        for (int i = 1; i < count; ++i)
            text += " a" + std::to_string(i) + "='>'";
        return text + "/>";
    };
    EXPECT_NO_THROW(decode(attributes(256)));
    EXPECT_THAT(refusal(attributes(257)), HasSubstr("256"));

    EXPECT_THAT(refusal(std::string("<group name=\"a\"\0/>", 18)), HasSubstr("NUL"));
    EXPECT_THAT(refusal(std::string("<group name=\"\0a\"/>", 18)), HasSubstr("NUL"));
    EXPECT_THAT(refusal("<group name=\"a&#0;\"/>"), HasSubstr("NUL"));
    EXPECT_THAT(refusal("<!DOCTYPE x [<!ENTITY a \"aaaa\">]><group name=\"a\"/>"),
                HasSubstr("document type declaration"));
    const std::string empty = "<group name=\"a\"></group>";
    EXPECT_NO_THROW(decode(empty + std::string((16 << 20) - empty.size(), ' ')));
    EXPECT_THAT(refusal(empty + std::string((16 << 20) + 1 - empty.size(), ' ')), HasSubstr("16777216"));
    EXPECT_NO_THROW(decodeIn(item(repeated("a/", 499) + "a", "int8", "1")));
    EXPECT_THAT(refusal("<group name=\"a\">" + item(repeated("a/", 500) + "a", "int8", "1") + "</group>"),
                HasSubstr("limit of 500"));
    EXPECT_THAT(refusal("<group name=\"a\"/><group name=\"b\"/>"), HasSubstr("root"));
    for (const char* node : {"<!--  -->", "<?nothing?>", "text<element/>", "<![CDATA[x]]>"}) {
        const int nodes = node[0] == 't' ? 2 : 1;
        std::string most = "<group>" + repeated("<!-- -->", nodes == 2) +
                           repeated(node, (250000 - nodes) / nodes) + "</group>";
        std::string more = most + "<!---->";
        EXPECT_EQ(checkXml(most), XmlForm::Utf8) << node;
        EXPECT_THROW(checkXml(more), Exception) << node;
    }
    // 1 + 2 n nodes and attributes in 15 + 10 n bytes: 100,000 and an eighth of the bytes are allowed.
    std::string few = "<group>" + repeated("<a b='c'/>", 133334) + "</group>", many = few;
    many.insert(7, "<a b='c'/>");
    EXPECT_EQ(checkXml(few), XmlForm::Utf8);
    EXPECT_THROW(checkXml(many), Exception);
    std::string paths;
    for (int i = 0; i < 201; ++i)
        paths += item(std::to_string(i) + repeated("/a", 499), "int8", "1");
    EXPECT_THAT(refusal("<group name=\"a\">" + paths + "</group>"), HasSubstr("100000 groups"));
}

TEST(StorageDecoderXml, LetsNothingHideMarkupFromItsCheck)
{
    // Each of these looks flat if read one way and 100,000 elements deep if read another.
    const std::string deep = repeated("<a>", 100000);
    for (const std::string& hidden : {
             "<group name=\"&#x\" b='x1;\">" + deep + "'/>",
             "<group name=\"\xF0\" b='\">" + deep + "'/>",
             "<?xml version=\"?><!--\"?>" + deep + "--><group name=\"a\"/>",
             "<?xml a=\" version=\"?><!--\"?>" + deep + "--><group name=\"a\"/>",
             "<?pi > " + deep + "?><group name=\"a\"/>",
             "<?xml-stylesheet a=\" version=\"?><!--\"?>" + deep + "--><group name=\"a\"/>",
             "<![cdata[>" + deep + "]]><group name=\"a\"/>",
             "<!ELEMENT \">" + deep + "\"><group name=\"a\"/>",
             "<group name=a'>" + deep + "'/>",
         }) {
        try {
            decode(hidden); // not to overflow the stack is what counts
        } catch (const Exception&) {
        }
    }
}

TEST(StorageDecoderXml, ReadsBinaryPackagesDepthFirst)
{
    const std::string text = "<group name=\"r\"><item name=\"a\" type=\"uint16\" size=\"2\"/>"
                             "<group name=\"g\"><item name=\"z\" type=\"uint8[]\" size=\"6\"/></group>"
                             "<item name=\"b\" type=\"int32\" size=\"4\"/></group>";
    const auto check = [](const Storage& storage) {
        EXPECT_EQ(storage.get("a")->value<std::uint16_t>(), 0x0102);
        EXPECT_EQ(storage.get("g/z")->value<Bytes>(), (Bytes{9, 0}));
        EXPECT_EQ(storage.get("b")->value<int>(), -2);
    };
    const std::string little("\x02\x01\x02\0\0\0\x09\0\xFE\xFF\xFF\xFF", 12);
    const std::string big("\x01\x02\0\0\0\x02\x09\0\xFF\xFF\xFF\xFE", 12);
    check(decode(package("values=\"binary\" endian=\"little\"", text, little)).first);
    check(decode(package("values=\"binary\" endian=\"big\"", text, big)).first);

    std::istringstream in(package("values=\"binary\"", text, little + "next"));
    check(StorageDecoderXml::decode<Storage>(in).first);
    std::string next;
    EXPECT_TRUE(in >> next);
    EXPECT_EQ(next, "next") << "what follows the package stays in the stream";

    EXPECT_EQ(decode(package("values=\"text\"", "<group name=\"t\">" + item("a", "bool", "true") + "</group>",
                             "anything"))
                  .second,
              "t");
}

TEST(StorageDecoderXml, RefusesBrokenPackages)
{
    const auto one = [](const std::string& attributes, const std::string& values) {
        return package("values=\"binary\"", "<group name=\"r\"><item name=\"a\" " + attributes + "/></group>",
                       values);
    };
    EXPECT_EQ(refusalAndFunction(one("type=\"int16\" size=\"3\"", "abc")),
              Refusal("Buffer size and type size does not match", "decodeStorage(..)\n"));
    for (const char* tooSmall : {"type=\"int16\" size=\"1\"", "type=\"string\" size=\"1\"",
                                 "type=\"uint8[]\" size=\"4\"", "type=\"double\" size=\"0\""})
        EXPECT_EQ(refusalAndFunction(one(tooSmall, "\1\2\3\4")),
                  Refusal("Buffer size and type size does not match", "decodeStorage(..)\n"));
    EXPECT_THAT(refusal(one("type=\"int16\" size=\"2\"", "a")), HasSubstr("1 bytes left"));
    EXPECT_THAT(refusal(one("type=\"uint8[]\" size=\"67108864\"", "abcd")), HasSubstr("4 bytes left"));
    EXPECT_THAT(refusal(one("type=\"uint8[]\" size=\"67108865\"", "abcd")), HasSubstr("limit of 67108864"));
    for (const char* size : {"size=\"-1\"", "size=\"18446744073709551616\"", "size=\"2x\"", "size=\"\"", ""})
        EXPECT_THAT(refusal(one(std::string("type=\"int16\" ") + size, "ab")), HasSubstr("size")) << size;

    const std::string group = "<group name=\"r\"/>";
    for (const char* start : {"<?storage version=\"2\" values=\"text\" size=\"17\"?>\n",
                              "<?storage values=\"text\" size=\"17\"?>\n",
                              "<?storage version=\"1\" values=\"hex\" size=\"17\"?>\n",
                              "<?storage version=\"1\" values=\"text\" endian=\"middle\" size=\"17\"?>\n",
                              "<?storage version=\"1\" values=\"text\" size=\"-1\"?>\n",
                              "<?storage version=\"1\" values=\"text\" size=\"18446744073709551633\"?>\n",
                              "<?storage version=\"1\" values=\"text\"?>\n",
                              "<?storage version=\"1\" values=\"text\" size=\"17\" size=\"17\"?>\n",
                              "<?storage version=\"1\" values=\"text\" size=\"17\" colour=\"red\"?>\n",
                              "<?storage version=\"1\" values=\"text\" size=\"17\"\n",
                              "<?storage version=\"1\" values=\"text\" size=\"18\"?>\n",
                              "<?storage version=\"1\" values=\"text\" size=\"16777217\"?>\n"})
        EXPECT_NE(refusal(start + group), "nothing thrown") << start;
    EXPECT_NO_THROW(decode("<?storage  size=\"17\" version=\"1\" values=\"text\" ?>\r\n" + group));
}

TEST(StorageDecoderXml, DecodesOneGroupOfAParsedDocument)
{
    TiXmlDocument document;
    document.Parse("<any><item name=\"a\" type=\"uint8[]\">1 2</item></any>");
    std::istringstream none;
    const auto storage =
        StorageDecoderXml::decodeStorage<Storage>(none, document.FirstChild(), true, Endian::Native);
    EXPECT_EQ(storage.get("a")->value<Bytes>(), (Bytes{1, 2}));
    EXPECT_EQ(StorageDecoderXml::decodeStorage<Storage>(none, nullptr, true, Endian::Native).size(), 0u);
}

TEST(StorageDecoderIni, ReadsSectionsAndValuesOfTheTypeThatFits)
{
    const auto [storage, name] = decode("\xEF\xBB\xBFtop = true\r\n"
                                        "; a comment\n\n"
                                        "  # another\n"
                                        "[ site/lens ]\n"
                                        "count=-9223372036854775808\n"
                                        "large = 9223372036854775808\n"
                                        "gain = 1.5\n"
                                        "colour = 255, 0,7\n"
                                        "text = a = b; c\n"
                                        "beyond = 1,256\n"
                                        "word = inf\n"
                                        "none =\n"
                                        "sub/key = 007\n"
                                        "[empty]\n"
                                        "[site]\n"
                                        "name = True",
                                        ini);
    EXPECT_EQ(name, "");
    EXPECT_TRUE(storage.get("top")->value<bool>());
    const Storage& lens = storage.get("site/lens")->value<Storage>();
    EXPECT_EQ(lens.get("count")->value<std::int64_t>(), INT64_MIN);
    EXPECT_EQ(lens.get("large")->value<double>(), 9223372036854775808.0);
    EXPECT_EQ(lens.get("gain")->value<double>(), 1.5);
    EXPECT_EQ(lens.get("colour")->value<Bytes>(), (Bytes{255, 0, 7}));
    EXPECT_EQ(lens.get("text")->value<std::string>(), "a = b; c");
    EXPECT_EQ(lens.get("beyond")->value<std::string>(), "1,256");
    EXPECT_EQ(lens.get("word")->value<std::string>(), "inf");
    EXPECT_EQ(lens.get("none")->value<std::string>(), "");
    EXPECT_EQ(lens.get("sub/key")->value<std::int64_t>(), 7);
    EXPECT_EQ(storage.get("empty")->value<Storage>().size(), 0u);
    EXPECT_EQ(storage.get("site/name")->value<std::string>(), "True");
    EXPECT_EQ(storage.size(), 3u);
}

TEST(StorageDecoderIni, RefusesWhatIsNoIni)
{
    EXPECT_EQ(refusal("a = 1\nword\n", ini), "INI line 2 is neither a section nor key = value");
    EXPECT_THAT(refusal("[open\n", ini), HasSubstr("line 1"));
    for (const char* text : {"[]", "[a//b]", "= 1", "/x = 1", "[a]\nb/ = 1"})
        EXPECT_EQ(refusal(text, ini), "invalid id") << text;
    EXPECT_THAT(refusal("a = 1\n[a]\nb = 2", ini), HasSubstr("not a valid storage type: a"));
    EXPECT_THAT(refusal("[" + repeated("a/", 500) + "a]", ini), HasSubstr("limit of 500"));
    EXPECT_NO_THROW(decode("[" + repeated("a/", 498) + "a]\na = 1", ini));
    EXPECT_THAT(refusal("[" + repeated("a/", 498) + "a]\na/a = 1", ini), HasSubstr("limit of 500"));
    EXPECT_NO_THROW(decode("[a]\n" + repeated("b=1\n", 99999), ini));
    EXPECT_THAT(refusal("[a]\n" + repeated("b=1\n", 100000), ini), HasSubstr("100000 keys"));
    EXPECT_THAT(refusal(std::string((64 << 20) + 1, '\n'), ini), HasSubstr("67108864"));

    std::istringstream failed;
    failed.setstate(std::ios::badbit);
    EXPECT_THROW(StorageDecoderIni::decode(failed), Exception);
}
