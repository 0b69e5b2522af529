// Not installed.
#pragma once

#include <string>

namespace velmo::exp {

/// What the check of an XML text finds.
enum class XmlForm
{
    Broken, ///< no parser needs to see it
    Utf8,   ///< markup in order, all of it UTF-8
    Bytes   ///< markup in order, some bytes are not UTF-8
};

/// Looks through an XML text once, before the parser sees it. That parser recurses for every nested
/// element, compares every attribute with all before it and believes character references and
/// multi-byte characters that swallow markup; so only text that both read the same way may pass.
/// Whether end tags have the names of their start tags is left to the parser.
///
/// Instructions, the XML declaration among them, have no meaning here: what they say is overwritten.
/// @throws Exception  that names the limit, for more nodes, nested elements or attributes of one element
///                    than StorageLimits allow, a second root element, a NUL byte (also as a reference) and
///                    a document type declaration
XmlForm checkXml(std::string& text);

} // namespace velmo::exp
