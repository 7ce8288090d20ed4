#include "drivers/common/node_form.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

namespace driver {
namespace {

constexpr const char* kNoMemory = "There is no memory left.";

std::atomic<const DriverHost*> g_host = nullptr;

// The settings of a node, with copies of its texts.
class CNode {
 public:
  CNode() = default;
  explicit CNode(const DriverRecord& record)
      : m_record(record),
        m_text1(record.text1 ? record.text1 : ""),
        m_text2(record.text2 ? record.text2 : "") {}

  // Valid while the node exists and is unchanged.
  DriverRecord Record() const {
    DriverRecord record = m_record;
    record.text1 = m_text1.c_str();
    record.text2 = m_text2.c_str();
    return record;
  }

 private:
  DriverRecord m_record = {};  // except its texts
  std::string m_text1;
  std::string m_text2;
};
CNode g_node;  // of SetConfig, or of the last accepted form

// The data that a field of the form points to.
struct CBuffers {
  std::string text;         // the final 0 is part of the buffer
  std::vector<int> values;  // of the choices
  std::vector<const char*> words;
  std::string other;
};

// One run of the form, for a node.
class CForm {
 public:
  explicit CForm(const DriverRecord& record) : m_record(record), m_buffers(kNodeForm.fields.size()) {
    for (std::size_t i = 0; i < m_buffers.size(); ++i)
      m_fields.push_back(FieldOf(kNodeForm.fields[i], m_buffers[i]));
  }
  CForm(const CForm&) = delete;  // the fields point into it
  CForm& operator=(const CForm&) = delete;

  // Shows the form. True: accepted.
  bool Run(const DriverHost& host) {
    const DriverForm form = {kNodeForm.title, m_fields.data(), static_cast<int>(m_fields.size()), Check,
                             this};
    return host.ShowForm(&form) == 1;
  }
  // The node with the values of the fields.
  CNode Result() const { return CNode(RecordOf(m_fields.data())); }

 private:
  static constexpr std::size_t kTextLength = 16000;  // bytes that can be typed at least

  DriverField FieldOf(const CField& row, CBuffers& buffers) const {
    DriverField field = {row.name, row.help, row.kind, row.low, row.high, nullptr, 0, 0, nullptr, 0};
    if (row.kind == driverFieldText) {
      buffers.text = m_record.*row.text;
      buffers.text.resize(std::max(buffers.text.size(), kTextLength));
      field.text = buffers.text.data();
      field.textSize = static_cast<unsigned>(buffers.text.size() + 1);
    } else if (row.kind == driverFieldChoice) {
      field.number = ListChoices(row, m_record.*row.number, buffers);
      field.choices = buffers.words.data();
      field.choiceCount = static_cast<int>(buffers.words.size());
    } else {
      field.number = m_record.*row.number;
    }
    return field;
  }
  // Returns the index of value.
  static int ListChoices(const CField& row, int value, CBuffers& buffers) {
    const auto add = [&](int choice, const char* words) {
      buffers.values.push_back(choice);
      buffers.words.push_back(words);
    };
    for (const CChoice& choice : row.choices) add(choice.value, choice.words);
    const auto found = std::ranges::find(row.choices, value, &CChoice::value);
    if (found == row.choices.end()) {
      buffers.other = row.other + (' ' + std::to_string(value));
      add(value, buffers.other.c_str());
    }
    return static_cast<int>(found - row.choices.begin());
  }
  // The settings with the values of fields, which are those of this form or a copy.
  DriverRecord RecordOf(const DriverField* fields) const {
    DriverRecord record = m_record;
    for (std::size_t i = 0; i < m_buffers.size(); ++i) {
      const CField& row = kNodeForm.fields[i];
      if (row.kind == driverFieldText)
        record.*row.text = fields[i].text;
      else if (row.kind == driverFieldChoice)
        record.*row.number = m_buffers[i].values[static_cast<std::size_t>(fields[i].number)];
      else
        record.*row.number = fields[i].number;
    }
    return record;
  }
  // A message begins with the name of a setting; the form shows the setting by its caption.
  static std::string InWords(std::string fault) {
    const std::string setting = fault.substr(0, fault.find_first_of(": "));
    for (const CField& row : kNodeForm.fields)
      if (!setting.empty() && std::string_view(row.help).starts_with(setting + ':'))
        return fault.replace(0, setting.size(), row.name);
    return fault;
  }
  static const char* Check(const DriverField* fields, int /*fieldCount*/, void* user) {
    auto& form = *static_cast<CForm*>(user);
    try {
      DriverRecord record = form.RecordOf(fields);
      record.variableCount = 0;  // the variables may be changed after the form
      form.m_fault = InWords(kNodeForm.check(record));
    } catch (const std::bad_alloc&) {
      return kNoMemory;
    }
    return form.m_fault.empty() ? nullptr : form.m_fault.c_str();
  }

  const DriverRecord m_record;
  std::vector<CBuffers> m_buffers;  // of the fields
  std::vector<DriverField> m_fields;
  std::string m_fault;
};

}  // namespace

void SetHost(const DriverHost* host) { g_host = host; }

namespace {

// The answer of question to config, null if it is empty. Valid until the next call on this thread: an object
// with a destructor would keep the module in memory.
const char* Answer(std::string (*question)(const DriverRecord&), const DriverRecord& config,
                   const char* ifNoMemory) {
  static thread_local char t_answer[2048];
  try {
    std::snprintf(t_answer, sizeof t_answer, "%s", question ? question(config).c_str() : "");
    return *t_answer ? t_answer : nullptr;
  } catch (const std::bad_alloc&) {
    return ifNoMemory;
  }
}

}  // namespace

const char* CheckConfig(const DriverRecord& config) { return Answer(kNodeForm.check, config, kNoMemory); }

const char* GetLine(const DriverRecord& config) { return Answer(kNodeForm.line, config, nullptr); }

int ShowConfig(int isNew) {
  const DriverHost* host = g_host;
  if (!host || !host->ShowForm) return 0;
  try {
    const CNode node = isNew == 1 ? CNode(kNodeForm.newNode) : g_node;
    CForm form(node.Record());
    if (!form.Run(*host)) return 0;
    g_node = form.Result();
    return 1;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

DriverRecord GetConfig() {
  DriverRecord record = g_node.Record();
  record.plcType = kNodeForm.id;
  return record;
}

void SetConfig(DriverRecord config) {
  try {
    g_node = CNode(config);
  } catch (const std::bad_alloc&) {
    g_node = {};  // rather than the settings of another node
  }
}

}  // namespace driver
