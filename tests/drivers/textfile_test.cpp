// The driver of docs/driver-guide.md, compiled from there.
#include "tests/drivers/driver_node.h"
#include "tests/drivers/scripted_host.h"
#include "tests/support/files.h"
#include "vastra/platform/prompt.h"

namespace vastra {
namespace {

TEST(GuideDriver, ReadsItsFileAndFindsItAgainAfterALoss) {
  CRecorder recorder;
  const CTempDir folder;
  const CString path = folder / "numbers.txt";
  WriteBytes(path, "1.5 -2\n");
  DriverConfig config;
  config.text1 = path;
  CDriverNode node(recorder, 9900, config, 2), second(recorder, 9900, config, 2);
  EXPECT_EQ((std::vector<float>{1.5f, -2}), node.Read());
  WriteBytes(path, "3");
  EXPECT_EQ(std::vector<float>{}, node.Read());
  EXPECT_EQ("Read Error Not named " + path.Std() + ": has too few numbers.\n", node.Fault());
  std::filesystem::remove(path.Std());
  EXPECT_EQ(std::vector<float>{}, node.Read());
  EXPECT_EQ("Read Error Not named " + path.Std() + ": cannot be opened.\n", node.Fault());
  WriteBytes(path, "4 5 6");
  EXPECT_EQ((std::vector<float>{4, 5}), node.Read());
}

TEST(GuideDriver, RefusesWhatItCannotServe) {
  CRecorder recorder;
  const CTempDir folder;
  const CString path = folder / "numbers.txt";
  WriteBytes(path, "1");
  DriverConfig config;
  config.text1 = path;
  EXPECT_EQ("Open Fatal Not named Invalid mode.\n",
            CDriverNode(recorder, 9900, config, 1, CLink::modeWrite).Fault());
  std::vector<std::unique_ptr<CDriverNode>> nodes;
  for (int i = 0; i < 64; ++i) nodes.push_back(std::make_unique<CDriverNode>(recorder, 9900, config, 1));
  EXPECT_EQ(std::vector<float>{1}, nodes.back()->Read());
  EXPECT_EQ("Open Fatal Not named Not enough memory.\n", CDriverNode(recorder, 9900, config, 1).Fault());
  nodes.clear();
  EXPECT_EQ("", CDriverNode(recorder, 9900, config, 1).Fault());
  config.text1 = CString(std::string(300, 'a'));
  EXPECT_EQ("Open Fatal Not named Text file: text1 is no file that can be read.\n",
            CDriverNode(recorder, 9900, config, 1).Fault());
}

TEST(GuideDriver, AsksForItsPathInAForm) {
  CRecorder recorder;
  CScriptedHost host;
  const CDriverFactory& factory = *CDriverFactory::Instance();
  int index = 0;
  while (factory.GetDriverName(index) != "Text file's dialog") ++index;
  const std::unique_ptr<CPlcLink> link(factory.NewDriver(index));
  DriverConfig config;
  config.timeOut = 7;
  config.text1 = "/old";
  config.plcType = 9900;
  link->SetConfig(config);
  host.enters["Path"] = "new";
  EXPECT_EQ(IDCANCEL, link->ShowConfig(0));
  EXPECT_EQ("Path=/old|", host.shown);
  EXPECT_EQ("Path: it has to begin with a slash.", host.refusal);
  EXPECT_TRUE(config == link->GetConfig());
  host.enters["Path"] = "/new";
  config.text1 = "/new";
  EXPECT_EQ(IDOK, link->ShowConfig(0));
  EXPECT_TRUE(config == link->GetConfig());
  config.timeOut = 0;
  EXPECT_EQ(IDOK, link->ShowConfig(1));
  EXPECT_TRUE(config == link->GetConfig());
  EXPECT_EQ("Path=|", host.shown);
}

}  // namespace
}  // namespace vastra
