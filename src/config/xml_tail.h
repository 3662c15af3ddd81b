// What follows the document element of an XML text.
#pragma once

#include <string>

namespace qvconfig {

// True when the text certainly holds character data (text or a CDATA
// section) after its document element, where only blanks, comments and
// processing instructions may follow. The configuration parser refuses such
// a text, but leaks a node while doing so, so it is not handed such texts.
// Also true for any text that ends in character data, which the parser
// refuses whatever comes before. Otherwise false whenever the text's shape
// is not plain enough to tell (a DOCTYPE, an unterminated construct, no
// element at all).
bool HasTextAfterRoot(const std::string& text);

}  // namespace qvconfig
