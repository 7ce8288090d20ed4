#include "host/common/configuration_json.h"

#include "host/common/configuration_file.h"
#include "host/common/json_text.h"
#include "host/common/json_walk.h"

namespace vastra {
namespace {

// The JSON object of a configuration: its version and the blocks.
struct CDocument {
  CConfiguration& m_configuration;

  void Fields(CFieldWalk& walk) {
    walk.Field("version", m_configuration.m_version);
    if (!IsKnownVersion(m_configuration.m_version)) throw CJsonFault("version", "must be 1002 or 1003");
    m_configuration.Fields(walk);
  }
};

CJson ToJson(CConfiguration& configuration) {
  CDocument document = {configuration};
  CJsonWriter writer;
  writer.Write(document);
  return writer.Take();
}

// The writer writes null for a number that has no JSON form.
const char* FaultOf(const CJson& value) {
  if (value.is_null()) return "a NaN with a payload has no JSON form";
  if (value.is_string() && !IsJsonText(value))
    return "a string that is not UTF-8 or has U+0000 has no JSON form";
  return nullptr;
}

}  // namespace

CString ConfigurationFromJson(std::string_view text, const CString& folder, CConfiguration& fresh) {
  try {
    const nlohmann::json root = ParseJson(text);
    CDocument document = {fresh};
    CJsonReader(root, folder).Read(document);
  } catch (const CJsonFault& fault) {
    return fault.Text();
  }
  return {};
}

CString ConfigurationToJson(CConfiguration& configuration, std::string& text) {
  const CJson root = ToJson(configuration);
  for (const CJsonLeaf& leaf : Leaves(root))
    if (const char* fault = FaultOf(*leaf.m_value)) return CJsonFault(leaf.m_path, fault).Text();
  text = root.dump(2) + "\n";
  return {};
}

CStringArray DifferentKeys(CConfiguration& a, CConfiguration& b) {
  const CJson rootA = ToJson(a);
  const CJson rootB = ToJson(b);
  const std::vector<CJsonLeaf> leavesA = Leaves(rootA);
  const std::vector<CJsonLeaf> leavesB = Leaves(rootB);
  CStringArray paths;
  for (std::size_t i = 0; i < leavesA.size() && i < leavesB.size(); ++i)
    if (*leavesA[i].m_value != *leavesB[i].m_value) paths.Add(leavesA[i].m_path);
  return paths;
}

// Neither form alone is enough: JSON writes each NaN with a payload as null, and the configuration file lacks
// some settings.
bool IsSame(CConfiguration& a, CConfiguration& b) {
  return ToJson(a) == ToJson(b) && StoreConfiguration(a) == StoreConfiguration(b);
}

}  // namespace vastra
