// One scan of an external program: from a driver module in its folder, through a namer, into a file link.
#include <vastra/vastra.h>

#include <cstdio>

namespace {

constexpr int kValues = 3;

vastra::CNameConfig* Names() {
  auto* config = new vastra::CNameConfig;
  for (const char* name : {"a", "b", "c"}) config->m_names.Add(name);
  return config;
}

bool OpenSource(vastra::CLink& link) {
  vastra::CLinkConfigList configs;
  auto* node = new vastra::CPlcLinkConfig;
  node->m_config.variableCount = kValues;
  configs.AddHead(node);
  configs.AddHead(Names());
  return link.Open(configs, vastra::CLink::modeRead);
}

bool OpenStore(vastra::CLink& link) {
  vastra::CLinkConfigList configs;
  auto* file = new vastra::CFileConfig;
  file->m_bufferOnly = 1;
  configs.AddHead(file);
  configs.AddHead(Names());
  return link.Open(configs, vastra::CLink::modeWrite);
}

}  // namespace

int main() {
  vastra::CMessenger messenger;
  vastra::CLink::SetMessenger(&messenger);
  vastra::CDriverFactory* drivers = vastra::CDriverFactory::Instance();
  const std::unique_ptr<vastra::CLink> source(
      vastra::CNamerLink::Create(drivers->NewDriver(drivers->GetDriverIndex(77))));
  const std::unique_ptr<vastra::CLink> store(vastra::CNamerLink::Create(vastra::CFileLink::Create(nullptr)));
  vastra::CLogSample scan;
  const bool good = source && OpenSource(*source) && OpenStore(*store) && source->Read(scan) &&
                    store->Write(scan) && scan.m_values.GetSize() == kValues && scan.m_values[2] == 2.0f;
  if (!good) std::puts("the scan failed");
  return good ? 0 : 1;
}
