#include "config/xml_tail.h"

#include <cstring>

namespace qvconfig {

namespace {

bool Blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool StartsWith(const std::string& s, size_t at, const char* prefix) {
  return s.compare(at, strlen(prefix), prefix) == 0;
}

// Moves `at` past the end mark of a construct; false when it is missing.
bool SkipPast(const std::string& s, size_t* at, const char* end) {
  size_t found = s.find(end, *at);
  if (found == std::string::npos) return false;
  *at = found + strlen(end);
  return true;
}

// Character data behind the last '>' lies after a closed document element
// or inside one that is never closed; the parser refuses the text either way.
bool EndsInText(const std::string& s) {
  size_t last = s.rfind('>');
  for (size_t i = last == std::string::npos ? 0 : last + 1; i < s.size(); ++i) {
    if (!Blank(s[i])) return true;
  }
  return false;
}

// Skips blanks, comments and processing instructions. The parser lets the
// end mark overlap the start ("<!-->", "<?>"), and so does this walk. False
// when one of them is unterminated.
bool SkipMisc(const std::string& s, size_t* at) {
  for (;;) {
    while (*at < s.size() && Blank(s[*at])) ++*at;
    if (StartsWith(s, *at, "<!--")) {
      *at += 2;
      if (!SkipPast(s, at, "-->")) return false;
    } else if (StartsWith(s, *at, "<?")) {
      *at += 1;
      if (!SkipPast(s, at, "?>")) return false;
    } else {
      return true;
    }
  }
}

// Moves `at` (on a start tag's '<') past the tag, quoted values included.
// *empty: the tag closes itself. False when it is unterminated. The parser
// takes an unquoted '<' inside a tag as the start of the next one, leaving
// the cut tag open, and so does this walk.
bool SkipStartTag(const std::string& s, size_t* at, bool* empty) {
  char quote = 0;
  for (size_t i = *at + 1; i < s.size(); ++i) {
    char c = s[i];
    if (quote != 0) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '<') {
      *empty = false;
      *at = i;
      return true;
    } else if (c == '>') {
      *empty = s[i - 1] == '/';
      *at = i + 1;
      return true;
    }
  }
  return false;
}

// Before the document element the parser also passes over stray '>'.
bool SkipProlog(const std::string& s, size_t* at) {
  for (;;) {
    if (!SkipMisc(s, at)) return false;
    if (*at >= s.size() || s[*at] != '>') return true;
    ++*at;
  }
}

}  // namespace

bool HasTextAfterRoot(const std::string& s) {
  if (EndsInText(s)) return true;
  size_t at = 0;
  if (!SkipProlog(s, &at) || at >= s.size() || s[at] != '<' || StartsWith(s, at, "<!")) {
    return false;
  }
  int depth = 0;
  do {
    if (s[at] != '<') {
      at = s.find('<', at);
      if (at == std::string::npos) return false;
    } else if (StartsWith(s, at, "<!--")) {
      at += 2;
      if (!SkipPast(s, &at, "-->")) return false;
    } else if (StartsWith(s, at, "<![CDATA[")) {
      at += 9;
      if (!SkipPast(s, &at, "]]>")) return false;
    } else if (StartsWith(s, at, "<?")) {
      at += 1;
      if (!SkipPast(s, &at, "?>")) return false;
    } else if (StartsWith(s, at, "<!")) {
      return false;
    } else if (StartsWith(s, at, "</")) {
      if (!SkipPast(s, &at, ">")) return false;
      --depth;
    } else {
      bool empty = false;
      if (!SkipStartTag(s, &at, &empty)) return false;
      if (!empty) ++depth;
    }
  } while (depth > 0);
  if (!SkipMisc(s, &at)) return false;
  return at < s.size() && (s[at] != '<' || StartsWith(s, at, "<![CDATA["));
}

}  // namespace qvconfig
