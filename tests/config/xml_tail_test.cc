// The test that keeps texts with character data after the document element
// away from the configuration parser (which leaks on them): it must catch
// those and never refuse a document the parser reads.
#include <gtest/gtest.h>

#include "config/config_xml.h"
#include "config/xml_tail.h"

namespace {

struct TailCase {
  const char* text;
  bool text_after_root;
};

TEST(XmlTail, FindsTextAfterTheRootOnly) {
  const TailCase cases[] = {
      {"<a/>", false},
      {"<?xml version=\"1.0\"?>\r\n<!-- c --><a x=\"1>2\" y='/'>t<b/><![CDATA[</a>]]></a>\r\n", false},
      {"<a><!-- </a> --><?p </a>?>x</a><!-- after --><?p?>\n", false},
      {"<a/> b", true},
      {"<a>t</a>x", true},
      {"<a/><!--c-->b<c/>", true},
      {"<a/><?p x?>&amp;", true},
      {"<a/><![CDATA[x]]>", true},
      // A '<' inside a tag starts the next tag, as the parser reads it.
      {"<a<b x=\"\"></b></a>e", true},
      {"<t<i v=\"\"><t<i e=\"\"</i></t></i><i</i></t>e", true},
      // End marks overlapping their start: "<!-->" and "<?>" are whole.
      {"<!--><a/>t<!---->", true},
      {"<?><a/>t<?p?>", true},
      // Stray '>' before the document element are passed over.
      {"<?x?>>\n> <a/>t<!---->", true},
      // Text at the very end, whatever comes before, the parser refuses.
      {"<!DOCTYPE a><a/>x", true},
      {"<a>x", true},
      {"<a/><!-- open", true},
      // Shapes it does not judge: left to the parser.
      {"<!DOCTYPE a><a/><!---->x<!---->", false},
      {"x<a/>", false},
      {"<a><b>", false},
  };
  for (const TailCase& c : cases) {
    EXPECT_EQ(qvconfig::HasTextAfterRoot(c.text), c.text_after_root) << c.text;
  }
  // Well-formed documents with comments, instructions, CDATA and quoted
  // markup characters still parse.
  for (int i = 0; i < 3; ++i) {
    qvconfig::ConfigXml doc;
    EXPECT_TRUE(doc.Parse(cases[i].text)) << cases[i].text;
  }
}

}  // namespace
