// quorvel config list | get SECTION | set SECTION FILE: a configuration
// section of the camera, read into its typed record and written out as XML
// (or viewed as JSON), or read from a file and sent.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <vector>

#include "camera_session.h"
#include "config_sections.h"
#include "json_view.h"
#include "report.h"

namespace {

struct ConfigOptions {
  std::string section;
  std::string file;
  bool json = false;
};

const ConfigSection* SectionOrFail(const std::string& name) {
  const ConfigSection* s = FindConfigSection(name);
  if (s == nullptr) {
    Fail("unknown configuration section '" + name + "' ('quorvel config list' shows them)");
  }
  return s;
}

// The record as its writer puts it; empty when the writer fails.
std::string WriteRecord(const ConfigSection& s, const void* record) {
  char* xml = s.write(record);
  if (xml == nullptr) return "";
  std::string text = xml;
  free(xml);
  return text;
}

bool ReadText(const std::string& path, std::string* text) {
  if (path == "-") {
    std::ostringstream s;
    s << std::cin.rdbuf();
    *text = s.str();
    return true;
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::ostringstream s;
  s << in.rdbuf();
  *text = s.str();
  return true;
}

int RunList() {
  printf("%-14s %4s %4s\n", "SECTION", "GET", "SET");
  for (const ConfigSection& s : ConfigSections()) {
    printf("%-14s %4ld %4s\n", s.name.c_str(), s.get_code,
           s.set_code ? std::to_string(s.set_code).c_str() : "-");
  }
  return 0;
}

int RunGet(const Cli& cli, const ConfigOptions& o) {
  const ConfigSection* s = SectionOrFail(o.section);
  if (s == nullptr) return 1;
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  Notice reply;
  std::string what = "config get " + s->name;
  if (!session.Ask(what, [&] { return s->get(session.id()); }, s->get_code, &reply)) return 1;
  std::vector<unsigned char> record(s->record_size);
  int read;
  {
    LibraryPrints quiet;  // the reader reports its trouble on standard output
    read = s->read(record.data(), reply.text.c_str());
  }
  if (read != 0) return Fail(what + " failed: the reply holds no usable " + s->name + " section");
  std::string xml = WriteRecord(*s, record.data());
  if (xml.empty()) return Fail(what + " failed: the record could not be written as XML");
  if (o.json) {
    nlohmann::ordered_json j;
    if (!XmlToJson(xml, &j)) return Fail(what + " failed: the written XML does not parse");
    printf("%s\n", j.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
  } else {
    printf("%s%s", xml.c_str(), xml.back() == '\n' ? "" : "\n");
  }
  return 0;
}

int RunSet(const Cli& cli, const ConfigOptions& o) {
  const ConfigSection* s = SectionOrFail(o.section);
  if (s == nullptr) return 1;
  std::string what = "config set " + s->name;
  if (s->set_code == 0) return Fail(what + " failed: the section cannot be written");
  std::string text;
  if (!ReadText(o.file, &text)) return Fail(what + " failed: cannot read " + o.file);
  std::vector<unsigned char> record(s->record_size);
  int read;
  {
    LibraryPrints quiet;
    read = s->read(record.data(), text.c_str());
  }
  if (read != 0) return Fail(what + " failed: " + o.file + " holds no usable " + s->name + " section");
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  if (!session.Ask(what, [&] { return s->set(session.id(), record.data()); }, s->set_code)) {
    return 1;
  }
  printf("%s: the camera took it (reply %ld)\n", what.c_str(), s->set_code);
  return 0;
}

}  // namespace

void AddConfigCommands(Cli& cli) {
  auto o = std::make_shared<ConfigOptions>();
  CLI::App* config = cli.app.add_subcommand("config", "read and write configuration sections");
  config->require_subcommand(1);
  cli.Add(config, "list", "list the sections by name, with their get and set codes",
          [] { return RunList(); });
  CLI::App* get = cli.Add(config, "get", "print a section as XML (or JSON)",
                          [&cli, o] { return RunGet(cli, *o); });
  get->add_option("SECTION", o->section, "section name (see 'config list')")->required();
  get->add_flag("--json", o->json, "print the section as JSON");
  CLI::App* set = cli.Add(config, "set", "send a section read from an XML file",
                          [&cli, o] { return RunSet(cli, *o); });
  set->add_option("SECTION", o->section, "section name (see 'config list')")->required();
  set->add_option("FILE", o->file, "XML file holding the section's element ('-': standard input)")
      ->required();
}
