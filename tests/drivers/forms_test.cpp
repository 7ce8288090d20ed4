#include <gtest/gtest.h>

#include <cstring>

#include "tests/drivers/driver_node.h"
#include "vastra/platform/prompt.h"
#include "vastra/plc/driver_host.h"

namespace vastra {
namespace {

const struct {
  const char* driver;
  DriverConfig given;
  const char *shown, *enters;  // the form of given, and what the user enters
  DriverConfig changed;
  const char *newNode, *newEnters;  // the same for a new node
  DriverConfig newSettings;
  std::vector<std::pair<const char*, const char*>> refused;  // with the begin of the words
} kForms[] = {
    {"Simulator",
     {1, 2, 3, 4, 5, 6, 7, 9001, 9, " ramp,sine", "two", 10, 11, 12, 13, 109},
     "|Waveforms= ramp,sine|Period (ms)=10|Amplitude (1/1000)=11|Seed of the noise=12|Station=3|"
     "First register=4|Each n-th call fails=13|It fails with=Time-out|",
     "|Waveforms=noise|Period (ms)=0|Amplitude (1/1000)=71|Seed of the noise=72|Station=73|"
     "First register=1048569|Each n-th call fails=74|It fails with=Reply error|",
     {1, 2, 73, 1048569, 5, 6, 7, 9001, 9, "noise", "two", 0, 71, 72, 74, 157},
     "|Waveforms=sine|Period (ms)=10000|Amplitude (1/1000)=1000|Seed of the noise=0|Station=0|"
     "First register=0|Each n-th call fails=0|It fails with=Unknown error|",
     "",
     {0, 0, 0, 0, 0, 0, 0, 9001, 0, "sine", "", 10000, 1000},
     {{"|Waveforms=sine, cosine|", "Waveforms has an unknown waveform: \"cosine\""}}},
    {"Modbus",
     {1, 2, 3, -4, 5, 6, 7, 9002, 9, "plc:1502", "h4 x 2: f32", 10, 11, 12, 3, 13},
     "|Device=plc:1502|Unit=3|Time-out (ms)=2|Values=h4 x 2: f32|Added to each address=-4|"
     "Pause between requests (ms)=10|Pause after connecting (ms)=11|Most registers in a request=12|"
     "Workarounds=Both|",
     "|Device=plc|Unit=71|Time-out (ms)=72|Values=c7|Added to each address=-3|Pause between requests (ms)=73|"
     "Pause after connecting (ms)=74|Most registers in a request=75|"
     "Workarounds=Connection closed after each scan|",
     {1, 72, 71, -3, 5, 6, 7, 9002, 9, "plc", "c7", 73, 74, 75, 2, 13},
     "|Device=|Unit=1|Time-out (ms)=1000|Values=|Added to each address=0|Pause between requests (ms)=0|"
     "Pause after connecting (ms)=0|Most registers in a request=0|Workarounds=None|",
     "|Device=plc|Values=c0|Workarounds=One request for each value|",
     {0, 1000, 1, 0, 0, 0, 0, 9002, 0, "plc", "c0", 0, 0, 0, 1},
     {{"|Values=h4, x1|", "Values: entry 2, "},
      {"|Most registers in a request=1|", "Most registers in a request: "}}},
    {"Text file's dialog",
     {1, 2, 3, 4, 5, 6, 7, 9900, 9, "/old", "", 10, 11, 12, 13, 14},
     "|Path=/old|",
     "|Path=/new|",
     {1, 2, 3, 4, 5, 6, 7, 9900, 9, "/new", "", 10, 11, 12, 13, 14},
     "|Path=|",
     "|Path=/new|",
     {0, 0, 0, 0, 0, 0, 0, 9900, 0, "/new", ""},
     {{"|Path=new|", "Path: it has to begin with a slash."}}},
};

std::unique_ptr<CPlcLink> NewLink(const char* driver, const DriverConfig& config) {
  const CDriverFactory& factory = *CDriverFactory::Instance();
  int index = 0;
  while (factory.GetDriverName(index) != driver) ++index;
  std::unique_ptr<CPlcLink> link(factory.NewDriver(index));
  link->SetConfig(config);
  return link;
}

// The host is the test: its user enters what the test says.
class Forms : public testing::Test {
 protected:
  Forms() { s_host = this; }
  ~Forms() override { InstallDriverHost(m_former); }

  // Shows the form of link to a user who enters "|Name=value|" of fields, a choice by its words.
  int Show(CPlcLink& link, std::string enters, int isNew = 0, bool accepts = true) {
    m_enters = std::move(enters);
    m_accepts = accepts;
    return link.ShowConfig(isNew);
  }

  CRecorder m_recorder;
  std::string m_shown;    // the last form, with all its fields
  std::string m_refusal;  // what its check said

 private:
  static std::string Shown(const DriverField& field) {
    if (field.kind == driverFieldText) return field.text;
    return field.kind == driverFieldChoice ? field.choices[field.number] : std::to_string(field.number);
  }
  static void Enter(DriverField& field, const std::string& value) {
    if (field.kind == driverFieldNumber) field.number = std::clamp(std::stoi(value), field.low, field.high);
    for (int i = 0; i < field.choiceCount; ++i)
      if (field.choices[i] == value) field.number = i;
    if (value.size() < field.textSize) std::strcpy(field.text, value.c_str());
  }
  // The user edits a copy, which goes into the form when it is accepted.
  int ShowForm(const DriverForm& form) {
    std::vector<DriverField> fields(form.fields, form.fields + form.fieldCount);
    std::vector<std::string> texts;
    texts.reserve(fields.size());
    m_shown = "|";
    for (DriverField& field : fields) {
      m_shown += field.name + ("=" + Shown(field)) + "|";
      field.text = texts.emplace_back(field.text ? field.text : "").append(field.textSize, '\0').data();
      const std::string name = "|" + std::string(field.name) + "=";
      const std::size_t at = m_enters.find(name), begin = at + name.size();
      if (at != m_enters.npos) Enter(field, m_enters.substr(begin, m_enters.find('|', begin) - begin));
    }
    const char* words = form.check(fields.data(), form.fieldCount, form.user);
    m_refusal = words ? words : "";
    if (words || !m_accepts) return 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      form.fields[i].number = fields[i].number;
      if (form.fields[i].text) std::strcpy(form.fields[i].text, fields[i].text);
    }
    return 1;
  }

  static inline Forms* s_host = nullptr;
  const DriverHost m_table = {DRIVER_HOST_VERSION,
                              [](const DriverForm* form) { return s_host->ShowForm(*form); }};
  std::string m_enters;
  bool m_accepts = true;
  const DriverHost* m_former = InstallDriverHost(&m_table);
};

TEST_F(Forms, ChangeWhatTheUserEnteredAndNothingElse) {
  for (const auto& form : kForms) {
    SCOPED_TRACE(form.driver);
    const std::unique_ptr<CPlcLink> link = NewLink(form.driver, form.given);
    for (const int isNew : {0, 1}) EXPECT_EQ(Show(*link, form.enters, isNew, false), IDCANCEL);
    for (const auto& [enters, words] : form.refused) {
      EXPECT_EQ(Show(*link, enters), IDCANCEL) << words;
      EXPECT_TRUE(m_refusal.starts_with(words)) << m_refusal;
    }
    EXPECT_TRUE(link->GetConfig() == form.given);
    EXPECT_EQ(Show(*link, form.enters), IDOK) << m_refusal;
    EXPECT_EQ(m_shown, form.shown);
    EXPECT_TRUE(link->GetConfig() == form.changed);
    EXPECT_EQ(Show(*link, form.newEnters, 1), IDOK) << m_refusal;
    EXPECT_EQ(m_shown, form.newNode);
    EXPECT_TRUE(link->GetConfig() == form.newSettings);
    const DriverHost* former = InstallDriverHost(nullptr);
    EXPECT_EQ(NewLink(form.driver, form.given)->ShowConfig(0), IDCANCEL);
    InstallDriverHost(former);
  }
}

TEST_F(Forms, KeepAValueThatAFieldDoesNotOfferAndHaveRoomForALongText) {
  DriverConfig config = kForms[0].given;
  config.text1 = std::string(17000, ' ').c_str();
  config.value5 = -60;
  const std::unique_ptr<CPlcLink> link = NewLink("Simulator", config);
  EXPECT_EQ(Show(*link, ""), IDOK);
  EXPECT_NE(m_shown.find("|It fails with=Status -60|"), std::string::npos) << m_shown;
  EXPECT_TRUE(link->GetConfig() == config);
  link->SetConfig(kForms[0].given);
  const std::string text = std::string(15996, ' ') + "ramp";
  EXPECT_EQ(Show(*link, "|Waveforms=" + text + "|"), IDOK) << m_refusal;
  EXPECT_EQ(link->GetConfig().text1.Std(), text);
}

}  // namespace
}  // namespace vastra
