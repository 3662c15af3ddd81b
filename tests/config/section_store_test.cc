// Section reads and writes of the alarm, system, record, server, platform and
// GB28181 sections against the configuration file.
#include <gtest/gtest.h>

#include <string>

#include "config/alarm_sections.h"
#include "config/config_files_helper.h"
#include "config/round_trip.h"
#include "config/section_fill_helper.h"
#include "config/service_sections.h"
#include "config/system_sections.h"

namespace {

const char kBase[] =
    "<?xml version=\"1.0\" encoding=\"GB2312\" ?>\n<IPCConfig>\n"
    "<ConfigVersion Version=\"1\"></ConfigVersion>\n<Other keep=\"1\"/>\n</IPCConfig>\n";

// Writes a filled record into a file without its section, reads it back,
// writes a changed record over it and reads that; checks what the file holds
// around the section. Then the failures: a file without the section to read,
// a file with nothing to splice into, a null record.
template <typename Rec, void (*fill)(Rec*), int (*get)(Rec*), int (*set)(Rec*)>
void StoreCycle(const std::string& tag) {
  ScratchDir dir;
  std::string path = dir / "config.xml";
  ScopedConfigPath scoped(path);
  WriteFile(path, kBase);
  Rec filled;
  fill(&filled);
  Rec back;
  CapturedStdout([&] {
    ASSERT_EQ(set(&filled), 0);
    memset(&back, 0x5A, sizeof(back));
    ASSERT_EQ(get(&back), 0);
  });
  EXPECT_TRUE(SameRecord(filled, back));
  std::string file = ReadFile(path);
  size_t section = file.find("<" + tag + ">");
  ASSERT_NE(section, std::string::npos);
  EXPECT_LT(file.find("<Other keep=\"1\"/>"), section);
  EXPECT_EQ(file.find("\r"), std::string::npos);  // carriage returns are saved as blanks
  EXPECT_EQ(file.substr(file.size() - 13), "</IPCConfig>\n");

  // Replaced both ways: by a cleared record, then by the filled one again.
  Rec zero;
  memset(&zero, 0, sizeof(zero));
  CapturedStdout([&] {
    ASSERT_EQ(set(&zero), 0);
    ASSERT_EQ(get(&back), 0);
  });
  EXPECT_FALSE(SameRecord(filled, back));
  CapturedStdout([&] {
    ASSERT_EQ(set(&filled), 0);
    ASSERT_EQ(get(&back), 0);
  });
  EXPECT_TRUE(SameRecord(filled, back));
  file = ReadFile(path);
  EXPECT_EQ(file.find("<" + tag + ">"), file.rfind("<" + tag + ">")) << "replaced, not added";
  EXPECT_NE(file.find("<Other keep=\"1\"/>"), std::string::npos);

  // No such section: -1 and a cleared record.
  WriteFile(path, kBase);
  memset(&back, 0x5A, sizeof(back));
  CapturedStdout([&] { EXPECT_EQ(get(&back), -1); });
  EXPECT_TRUE(SameRecord(zero, back));
  // Nothing to splice into: -1 and the file as it was.
  const char broken[] = "<IPCConfig><ConfigVersion Version=\"1\"/>";
  WriteFile(path, broken);
  CapturedStdout([&] { EXPECT_EQ(set(&filled), -1); });
  EXPECT_EQ(ReadFile(path), broken);
  EXPECT_EQ(set(nullptr), -1);
  EXPECT_EQ(get(nullptr), -1);
}

TEST(SectionStore, EverySectionWritesAndReadsBack) {
  const struct {
    const char* tag;
    void (*cycle)(const std::string&);
  } rows[] = {
      {"AlarmConfig", StoreCycle<AlarmConfig, FillAlarmConfig, GetAlarmConfig, SetAlarmConfig>},
      {"SystemConfig",
       StoreCycle<SystemConfig, FillSystemConfig, GetSystemConfig, SetSystemConfig>},
      {"RecordConfig",
       StoreCycle<RecordConfig, FillRecordConfig, GetRecordConfig, SetRecordConfig>},
      {"ServerConfig",
       StoreCycle<ServerConfig, FillServerConfig, GetServerConfig, SetServerConfig>},
      {"PlatformConfig",
       StoreCycle<PlatformConfig, FillPlatformConfig, GetPlatformConfig, SetPlatformConfig>},
      {"GB28181Config",
       StoreCycle<GB28181Config, FillGB28181Config, GetGB28181Config, SetGB28181Config>},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.tag);
    row.cycle(row.tag);
  }
}

TEST(SectionStore, ShowAlarmSizePrintsTheRecords) {
  std::string brief = CapturedStdout([] { ShowAlarmSize(0); });
  std::string full = CapturedStdout([] { ShowAlarmSize(1); });
  EXPECT_NE(brief.find("sizeof(AlarmConfig) = " + std::to_string(sizeof(AlarmConfig))),
            std::string::npos) << brief;
  EXPECT_EQ(brief.find("IOOutputAction"), std::string::npos);
  EXPECT_NE(full.find("sizeof(IOOutputAction) = 36"), std::string::npos) << full;
}

}  // namespace
