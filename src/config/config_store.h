// The configuration document as a whole and section by section: load and
// save of the whole record, section read and section write against the
// configuration file (CONFIG_FILE_PATH), and the version element.
//
// All functions return 0 or -1 and print their messages to standard output.
#pragma once

#include <upnp/ixml.h>

#include <functional>
#include <string>

#include "quorvel/quorvel.h"

// ---- whole document
// Reads the file at `path` and fills the whole record (cleared first). The
// root is IPCConfig, else VEXORAConfig. Of several elements of one section
// the first counts.
int ParseConfigXML(const char* path, IPCConfig* cfg);
// The same from the configuration file.
int GetConfigFromXml(IPCConfig* cfg);
// Writes the whole document to the configuration file, or to `path`.
int SetConfigToXML(IPCConfig* cfg);
int SetConfigToXML_Ex(IPCConfig* cfg, const char* path);
// Reads and parses the file into a scratch record: *valid = 1 when the root
// was found and every section reader succeeded, else 0. -1 only when
// the file cannot be read (or valid is null), else 0.
int CheckUserConfigFileValidity(const char* path, int* valid);

// ---- version element
int GetConfigVersion(ConfigVersion* cfg);
// Inserts a further ConfigVersion element before the root's end tag on every
// call (its start tag carries an attribute, so "<ConfigVersion>" is never
// found to replace); readers take the first.
int SetConfigVersion(ConfigVersion* cfg);
char* XMLGET_ConfigVersion(ConfigVersion* cfg);

// ---- diagnostics
// Prints the sizes of the configuration records.
void ShowSize();
// Prints "<name>[<size>]: <value>" with at most size bytes of value.
void ShowString(const char* name, int size, const char* value);

namespace qvconfig {

// Fills the whole record (cleared first) from a document text, as the whole
// load does from a file; 0, or -1 when the text does not parse or lacks the
// root.
int LoadConfigDocument(const std::string& text, IPCConfig* cfg);

// The document text as a save writes it (before carriage returns become
// blanks). False for a null record, or when the text cannot be built.
bool BuildConfigDocument(const IPCConfig* cfg, std::string* text);

// ---- section read and write (for the section modules)
// Reads the configuration file and hands the first element `tag` to `read`,
// returning its result. -1 when the file cannot be read, does not parse or
// lacks the element.
int ReadConfigSection(const char* tag,
                      const std::function<int(const IXML_Node*)>& read);
// Replaces the section `tag` of the configuration file with `text`, or
// inserts it before the root's end tag when the file has no such section.
// -1, with the file unchanged, when the text is null, the file cannot be
// read, there is nothing to splice into, or the file cannot be saved.
int WriteConfigSection(const char* tag, const char* text);
// The same with a writer's text, which it frees; a null text gives -1.
int WriteConfigSectionText(const char* tag, char* text);

// The splice itself on a document text: false when there is nothing to
// splice into (no section start tag and no root end tag, or a start tag
// without its end tag).
bool SpliceSection(const std::string& file, const char* tag, const char* text,
                   std::string* out);

}  // namespace qvconfig
