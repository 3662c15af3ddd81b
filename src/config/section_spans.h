// Locates the child elements of a document's root in the raw text, so that
// sections can be kept and written back exactly as the file holds them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qvconfig {

struct ElementSpan {
  std::string name;
  size_t begin;  // offset of '<'
  size_t end;    // offset just past the element's last '>'
};

// The child elements, in document order, of the first element named `root`.
// Comments, CDATA sections, processing instructions, declarations and quoted
// attribute values are skipped. A text that ends inside a construct gives the
// spans complete so far.
std::vector<ElementSpan> ScanChildSpans(const char* text, size_t length,
                                        const char* root);

}  // namespace qvconfig
