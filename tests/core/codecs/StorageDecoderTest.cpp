#include "core/codecs/StorageDecoder.h"

#include "core/codecs/StorageDecoderIni.h"
#include "core/codecs/StorageDecoderXml.h"
#include "core/codecs/XmlCheck.h"
#include "tests/Support.h"

#include <tinyxml.h>

using namespace velmo::exp;

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

const auto refused = [](const std::string& file, int format = xml) {
    return refusal([&] { decode(file, format); });
};

const auto rooted = [](const std::string& content) { return "<group name=\"r\">" + content + "</group>"; };

const auto item = [](const std::string& name, const std::string& type, const std::string& text) {
    return "<item name=\"" + name + "\" type=\"" + type + "\">" + text + "</item>";
};

std::string repeated(const std::string& text, int count)
{
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

const auto oneAt = [](const std::string& path) { return item(path, "int8", "1"); };

std::string pathOf(const std::string& first, int components)
{
    return first + repeated("/a", components - 1);
}

/// What `write` makes of paths that are so many times 500 groups and 201 more.
template <class Write>
std::string textOfPaths(int count, Write write)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += write(pathOf(std::to_string(i), 500));
    return text + write(pathOf("z", 201));
}

/// A file of a package instruction, an XML text and what follows it.
std::string package(const std::string& attributes, const std::string& text, const std::string& values = "")
{
    return "<?storage version=\"1\" " + attributes + " size=\"" + std::to_string(text.size()) + "\"?>\n" +
           text + values;
}

/// A binary package of one item.
const auto binary = [](const std::string& attributes, const std::string& values) {
    return package("values=\"binary\"", rooted("<item name=\"a\" " + attributes + "/>"), values);
};

} // namespace

TEST(StorageDecoder, ChoosesTheFormatByItsFlag)
{
    const auto expected = std::pair(Storage(), std::string("r"));
    for (const int format : {0, 1})
        EXPECT_EQ(decode("<group name='r'/>", format), expected);
    EXPECT_EQ(decode("a = 5", ini).first.get("a")->value<std::int64_t>(), 5);
    EXPECT_EQ(refused("<group name=\"r\"/>", 2), (Refusal{"JSON support disabled", "decode"}));
    for (const int format : {7, -1})
        EXPECT_EQ(refused("", format).message,
                  "StorageDecoder encountered unsupported flag, flag was: " + std::to_string(format));
}

TEST(StorageDecoder, LeavesTheStreamAndItsExceptionMaskAsTheyWere)
{
    const std::string text = rooted("<item name=\"a\" type=\"int16\" size=\"2\"/>");
    for (const auto& [format, file, good] : {std::tuple(xml, std::string("<group name=\"r\"/>"), true),
                                             {xml, "<group", false},
                                             {xml, package("values=\"binary\"", text, "ab"), true},
                                             {xml, package("values=\"binary\"", text, "a"), false},
                                             {ini, "a = 1", true},
                                             {ini, "a", false}}) {
        std::istringstream in(file);
        const auto mask = std::ios::failbit | std::ios::eofbit;
        in.exceptions(mask);
        EXPECT_EQ(refusal([&, f = format] { StorageDecoder<Storage>(f).decode(in); }) == Refusal{}, good)
            << file;
        EXPECT_EQ(in.exceptions(), mask);
        EXPECT_TRUE(in.good());
    }
    std::istringstream in(package("values=\"binary\"", text, "abnext"));
    StorageDecoderXml::decode<Storage>(in);
    std::string next;
    EXPECT_TRUE(in >> next);
    EXPECT_EQ(next, "next") << "what follows the package stays in the stream";
}

TEST(StorageDecoder, RefusesStreamsThatCanNotBeRead)
{
    for (const int format : {xml, ini}) {
        std::istringstream failed("a = 1");
        failed.setstate(std::ios::failbit);
        const auto decode = [&](std::istream& in) { StorageDecoder<Storage>(format).decode(in); };
        EXPECT_EQ(refusal([&] { decode(failed); }), (Refusal{"Inputstream not readable!", "decode"}));
        EXPECT_EQ((failed.clear(), failed.tellg()), 0) << "read before it was looked at";
        std::ifstream folder(testing::TempDir());
        EXPECT_EQ(refusal([&] { decode(folder); }).message, "Inputstream not readable!");
    }
}

TEST(StorageDecoderXml, ReadsGroupsAndItems)
{
    const auto [storage, name] =
        decode("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- by hand -->\n"
               "<?xml-stylesheet type='text/xsl' href=\"a>b.xsl\"?><?a version=\"?>"
               "<group name='Site &amp; more'>\n"
               "  <item name=\"gain\" type=\"uint16\"> <?b > ?>12 \n</item><?c <item> ?>\n"
               "  <!-- <item> in a comment --> some text\n"
               "  <group name=\"lens\">\n"
               "    <item name=\"label\" type=\"string\">35&#xb0; &lt;wide&gt; \xC3\xA4</item>\n"
               "    <group name=\"empty\"/>\n"
               "    <item name=\"none\" type=\"string\"/>\n"
               "  </group>\n"
               "  <item name=\"lens/x/y\" type=\"double\">0.5</item>\n"
               "  <item name=\"raw\" type=\"string\"><![CDATA[ <a&b> ]]></item>\n"
               "  <item name=\"twice\" type=\"int8\">1</item><item name=\"twice\" type=\"bool\">true</item>\n"
               "<?XML?></group><?d ?>\n");
    EXPECT_TRUE(name == "Site & more" && storage.size() == 4) << name;
    EXPECT_EQ(storage.get("gain")->value<std::uint16_t>(), 12);
    EXPECT_EQ(storage.get("lens/label")->value<std::string>(), "35\xC2\xB0 <wide> \xC3\xA4");
    EXPECT_EQ(storage.get("lens/empty")->value<Storage>().size(), 0u);
    EXPECT_EQ(storage.get("lens/none")->value<std::string>(), "");
    EXPECT_EQ(storage.get("lens/x/y")->value<double>(), 0.5);
    EXPECT_EQ(storage.get("raw")->value<std::string>(), " <a&b> ");
    EXPECT_TRUE(storage.get("twice")->value<bool>());
    EXPECT_EQ(decode("<group name=\"r\"/>"), std::pair(Storage(), std::string("r")));
    EXPECT_EQ(decode("<group name=\"\xB0\"/>").second, "\xB0") << "not UTF-8";
}

TEST(StorageDecoderXml, TrimsValuesWhateverTheParsersSwitch)
{
    const bool condense = TiXmlBase::IsWhiteSpaceCondensed();
    for (const bool on : {true, false}) {
        TiXmlBase::SetCondenseWhiteSpace(on);
        const Storage storage =
            decode(rooted("\n" + item("a", "int8", " \n5\t ") + " " + item("b", "string", " x  y "))).first;
        EXPECT_EQ(storage.get("a")->value<std::int8_t>(), 5);
        EXPECT_EQ(storage.get("b")->value<std::string>(), on ? "x y" : " x  y ");
        EXPECT_THAT(refused(rooted(item("a", "int8", " "))).message, HasSubstr("''"));
    }
    TiXmlBase::SetCondenseWhiteSpace(condense);
}

TEST(StorageDecoderXml, NamesWhatIsWrong)
{
    const Refusal noXml{"Inputstream does not contain any XML.", "decode"};
    for (const char* file :
         {"", "<group name='a'>", "<group name='a'></grou>", "<group name=a/>", "<group name='a'",
          "<group name='a'></group></group>", "<", "<!-- ", "<?xml", "<?xml a=", "<?pi ><group name='a'/>",
          "<?\?><group name='a'/>", "hello", "<group name='a'/>x", "x<group name='a'/>",
          "<![CDATA[x]]><group name='a'/>", "<group name='a' name='b'/>",
          // What the parser takes for blanks would make another name of it.
          "<\xEF\xBB\xBFgroup name='a'></group>", "<group name='a'></group\xEF\xBF\xBE>",
          "<group name='a'></group\xEF\xBF\xBF>",
          // References that are not whole, and characters beyond the last one.
          "<group name='&#x;'/>", "<group name='&#65'/>", "<group name='&#x4G;'/>",
          "<group name='&#x110000;'/>", "<group name='&#00000065;'/>", "<group name='&#65&#66;'/>"})
        EXPECT_EQ(refused(file), noXml) << file;
    EXPECT_EQ(decode("<group name='&#65;&#x10FFFF;'/>").second, "A\xF4\x8F\xBF\xBF");

    const std::pair<std::string, Refusal> others[] = {
        {"<!-- empty -->", {"Root element not found!", "decode"}},
        {"<tree name='a'/>", {"Root group element not found!", "decode"}},
        {rooted("<value name='x'>3</value>"), {"Unknown node type!", "decodeStorage"}},
        {rooted("<group name=''/>"), {"invalid id", "set"}},
        {rooted("<group name='/'><value name='x'/></group>"), {"Unknown node type!", "decodeStorage"}},
        {rooted(item("a", "int8", "")), {"'' is not a value of type int8", "fromString"}}};
    for (const auto& [file, expected] : others)
        EXPECT_EQ(refused(file), expected) << file;
    for (const std::string& nameless : {std::string("<group/>"), rooted("<item type=\"int8\">1</item>"),
                                        rooted("<item name=\"a\">1</item>"), rooted("<value>3</value>")})
        EXPECT_THROW(decode(nameless), std::logic_error) << nameless;
}

TEST(StorageDecoderXml, RefusesTextBeyondTheLimits)
{
    const auto nested = [](int depth) {
        return repeated("<group name=\"a\">", depth) + repeated("</group>", depth);
    };
    const auto attributes = [](int count) {
        std::string text = "<group name=\"a\"";
        for (int i = 1; i < count; ++i)
            text += " a" + std::to_string(i) + "='>'";
        return text + "/>";
    };
    const auto padded = [](std::size_t size) { return "<group name='a'/>" + std::string(size - 17, ' '); };
    const auto path = [](int components) { return rooted(oneAt(pathOf("a", components))); };
    const auto paths = [](int count) { return rooted(textOfPaths(count, oneAt)); };
    const std::string empty = "<group name=\"a\"/>";
    const std::tuple<std::string, std::string, const char*> limits[] = {
        {nested(500), nested(501), "limit of 500 nested"},
        {attributes(256), attributes(257), "limit of 256"},
        {padded(16 << 20), padded((16 << 20) + 1), "limit of 16777216"},
        {path(500), path(501), "limit of 500 components"},
        {paths(200), paths(201), "limit of 100000 groups"},
        {empty, empty + empty, "more than one root"},
        {empty, std::string("<group name=\"a\"\0/>", 18), "NUL"},
        {empty, std::string("<group name=\"\0a\"/>", 18), "NUL"},
        {empty, std::string("<\0", 2), "NUL"},
        {empty, "<group name=\"a&#0;\"/>", "NUL"},
        {empty, "<!DOCTYPE x [<!ENTITY a \"aaaa\">]><group name=\"a\"/>", "document type declaration"},
        {empty, "<!doctype x><group name=\"a\"/>", "document type declaration"}};
    for (const auto& [good, bad, message] : limits) {
        EXPECT_EQ(refused(good), Refusal{}) << message;
        EXPECT_THAT(refused(bad).message, HasSubstr(message));
    }

    // Nodes are counted before the parser makes any.
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
}

TEST(StorageDecoderXml, TellsUtf8FromOtherBytes)
{
    const auto formOf = [](const std::string& text) {
        std::string file = "<a b='" + text + "'/>";
        return checkXml(file);
    };
    EXPECT_EQ(formOf("\xC2\x80 \xE0\xA0\x80 \xF4\x8F\xBF\xBF"), XmlForm::Utf8);
    for (const char* text : {"\xC3", "\xC3<", "\xE2\x82 ", "\xE2\x82\xC0", "\xF0\x9F\x98x", "\x80",
                             "\xC1\x81", "\xF5\x80\x80\x80"})
        EXPECT_EQ(formOf(text), XmlForm::Bytes) << testing::PrintToString(text);
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
             "<?xml-stylesheet a=\" version=\"?><!--\"?>" + deep + "--><group name=\"a\"/>",
             "<?pi > " + deep + "?><group name=\"a\"/>",
             "<![cdata[>" + deep + "]]><group name=\"a\"/>",
             "<!ELEMENT \">" + deep + "\"><group name=\"a\"/>",
             "<group name=a'>" + deep + "'/>",
         })
        refused(hidden); // not to overflow the stack is what counts
}

TEST(StorageDecoderXml, ReadsPackages)
{
    const std::string text = rooted("<item name=\"a\" type=\"uint16\" size=\"2\"/>"
                                    "<group name=\"g\"><item name=\"z\" type=\"uint8[]\" size=\"6\"/></group>"
                                    "<item name=\"b\" type=\"int32\" size=\"4\"/>");
    const std::string little("\x02\x01\x02\0\0\0\x09\0\xFE\xFF\xFF\xFF", 12);
    const std::string big("\x01\x02\0\0\0\x02\x09\0\xFF\xFF\xFF\xFE", 12);
    for (const auto& [attributes, values] : {std::pair("values=\"binary\" endian=\"little\"", little),
                                             {"values=\"binary\"", little},
                                             {"values=\"binary\" endian=\"big\"", big}}) {
        const Storage storage = decode(package(attributes, text, values)).first; // depth first
        EXPECT_EQ(storage.get("a")->value<std::uint16_t>(), 0x0102);
        EXPECT_EQ(storage.get("g/z")->value<Bytes>(), (Bytes{9, 0}));
        EXPECT_EQ(storage.get("b")->value<int>(), -2);
    }
    EXPECT_TRUE(decode(package("values=\"text\"", rooted(item("t", "bool", "true")), "anything"))
                    .first.get("t")
                    ->value<bool>());
    EXPECT_NO_THROW(decode("<?storage  size=\"17\" version=\"1\" values=\"text\" ?>\r\n<group name=\"r\"/>"));
}

TEST(StorageDecoderXml, RefusesBrokenPackages)
{
    const Refusal otherSize{"Buffer size and type size does not match", "decodeStorage"};
    const std::string four = "\1\2\3\4";
    for (const char* size : {"type='int16' size='3'", "type='int16' size='1'", "type='string' size='1'",
                             "type='uint8[]' size='4'", "type='double' size='0'"})
        EXPECT_EQ(refused(binary(size, four)), otherSize) << size;
    const std::pair<std::string, const char*> others[] = {
        {binary("type=\"int16\" size=\"2\"", "a"), "1 bytes left"},
        {binary("type=\"uint8[]\" size=\"67108864\"", four), "4 bytes left"},
        {binary("type=\"uint8[]\" size=\"67108865\"", four), "limit of 67108864"},
        {package("values=\"binary\"", // all values together
                 rooted("<item name=\"a\" type=\"int8\" size=\"1\"/>"
                        "<item name=\"b\" type=\"uint8[]\" size=\"67108864\"/>"),
                 "a"),
         "limit of 67108864"},
        {"<?storage version=\"1\" values=\"text\" size=\"16777217\"?>\n", "limit of 16777216"},
        {binary("type=\"bool\" size=\"1\"", "\2"), "2 is not a value of type bool"},
        {binary("type=\"int24\" size=\"3\"", four), "'int24'"},
        {binary("type=\"int16\"", four), "size"}};
    for (const auto& [file, message] : others)
        EXPECT_THAT(refused(file).message, HasSubstr(message));
    for (const std::string size : {"-1", "18446744073709551616", "2x", ""})
        EXPECT_THAT(refused(binary("type='int16' size='" + size + "'", four)).message, HasSubstr("size"));

    const auto refusedWith = [](const std::string& part, const char* instead) {
        const std::string good = "<?storage version=\"1\" values=\"text\" size=\"17\"?>\n<group name=\"r\"/>";
        return refused(std::string(good).replace(good.find(part), part.size(), instead)) != Refusal{};
    };
    EXPECT_FALSE(refusedWith("17", "17"));
    for (const char* instead : {"-1", "18", "18446744073709551633", "17\" size=\"17", "17\" colour=\"red"})
        EXPECT_TRUE(refusedWith("17", instead)) << instead;
    for (const char* part : {"version=\"1\"", "size=\"17\"", "?>"})
        EXPECT_TRUE(refusedWith(part, "")) << part;
    EXPECT_TRUE(refusedWith("1", "2") && refusedWith("text", "hex") &&
                refusedWith(" size", " endian=\"middle\" size"));
}

TEST(StorageDecoderXml, DecodesOneGroupOfAParsedDocument)
{
    TiXmlDocument document;
    document.Parse("<any><item name=\"a\" type=\"uint8[]\">1 2</item></any>");
    std::istringstream none;
    const auto decode = [&](TiXmlNode* group) {
        return StorageDecoderXml::decodeStorage<Storage>(none, group, true, Endian::Native);
    };
    EXPECT_EQ(decode(document.FirstChild()).get("a")->value<Bytes>(), (Bytes{1, 2}));
    EXPECT_EQ(decode(nullptr).size(), 0u);
}

TEST(StorageDecoderIni, ReadsSectionsAndValuesOfTheTypeThatFits)
{
    const auto [storage, name] =
        decode("\xEF\xBB\xBFtop = true\r\n; a comment\n\n  # another\n[ site/lens ]\n"
               "count=-9223372036854775808\nlarge = 9223372036854775808\ngain = 1.5\n"
               "colour = 255, 0,7\ntext = a = b; c\nbeyond = 1,256\nopen = 1,2,\nword = inf\nnone =\n"
               "sub/key = 007\n[empty]\n[site]\nname = True",
               ini);
    EXPECT_TRUE(name.empty() && storage.size() == 3) << name;
    EXPECT_TRUE(storage.get("top")->value<bool>());
    EXPECT_EQ(storage.get("site/lens/count")->value<std::int64_t>(), INT64_MIN);
    EXPECT_EQ(storage.get("site/lens/large")->value<double>(), 9223372036854775808.0);
    EXPECT_EQ(storage.get("site/lens/gain")->value<double>(), 1.5);
    EXPECT_EQ(storage.get("site/lens/colour")->value<Bytes>(), (Bytes{255, 0, 7}));
    EXPECT_EQ(storage.get("site/lens/sub/key")->value<std::int64_t>(), 7);
    EXPECT_EQ(storage.get("empty")->value<Storage>().size(), 0u);
    for (const auto& [id, text] : {std::pair("site/lens/text", "a = b; c"),
                                   {"site/lens/beyond", "1,256"},
                                   {"site/lens/open", "1,2,"},
                                   {"site/lens/word", "inf"},
                                   {"site/lens/none", ""},
                                   {"site/name", "True"}})
        EXPECT_EQ(storage.get(id)->value<std::string>(), text) << id;
}

TEST(StorageDecoderIni, RefusesWhatIsNoIni)
{
    for (const auto& [text, message] :
         {std::pair("a = 1\nword\n", "INI line 2 is neither a section nor key = value"),
          {"[open\n", "INI line 1 is neither a section nor key = value"},
          {"[]", "invalid id"},
          {"[a//b]", "invalid id"},
          {"= 1", "invalid id"},
          {"/x = 1", "invalid id"},
          {"[a]\nb/ = 1", "invalid id"}})
        EXPECT_EQ(refused(text, ini).message, message) << text;
    EXPECT_THAT(refused("a = 1\n[a]\nb = 2", ini).message, HasSubstr("not a valid storage type: a"));

    const auto section = [](int components) { return "[" + pathOf("a", components) + "]\n"; };
    const auto paths = [](int count) {
        return textOfPaths(count, [](const std::string& path) { return path + "=1\n"; });
    };
    const std::tuple<std::string, std::string, const char*> limits[] = {
        {section(500), section(501), "limit of 500 components"},
        {section(499) + "a = 1", section(499) + "a/a = 1", "limit of 500 components"},
        {paths(200), paths(201), "limit of 100000 groups"},
        {"[a]\n" + repeated("b=1\n", 99999), "[a]\n" + repeated("b=1\n", 100000), "100000 keys"},
        {std::string(64 << 20, '\n'), std::string((64 << 20) + 1, '\n'), "limit of 67108864"}};
    for (const auto& [good, bad, message] : limits) {
        EXPECT_EQ(refused(good, ini), Refusal{}) << message;
        EXPECT_THAT(refused(bad, ini).message, HasSubstr(message));
    }
}
