// The driver of docs/driver-guide.md, compiled from there.
#include "tests/drivers/driver_node.h"
#include "tests/support/files.h"

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
  EXPECT_EQ(node.Read(), (std::vector<float>{1.5f, -2}));
  WriteBytes(path, "3");
  EXPECT_EQ(node.Read(), std::vector<float>{});
  EXPECT_EQ(node.Fault(), "Read Error Not named " + path.Std() + ": has too few numbers.\n");
  std::filesystem::remove(path.Std());
  EXPECT_EQ(node.Read(), std::vector<float>{});
  EXPECT_EQ(node.Fault(), "Read Error Not named " + path.Std() + ": cannot be opened.\n");
  WriteBytes(path, "4 5 6");
  EXPECT_EQ(node.Read(), (std::vector<float>{4, 5}));
}

TEST(GuideDriver, RefusesWhatItCannotServe) {
  CRecorder recorder;
  const CTempDir folder;
  const CString path = folder / "numbers.txt";
  WriteBytes(path, "1");
  DriverConfig config;
  config.text1 = path;
  EXPECT_EQ(CDriverNode(recorder, 9900, config, 1, CLink::modeWrite).Fault(),
            "Open Fatal Not named Invalid mode.\n");
  std::vector<std::unique_ptr<CDriverNode>> nodes;
  for (int i = 0; i < 64; ++i) nodes.push_back(std::make_unique<CDriverNode>(recorder, 9900, config, 1));
  EXPECT_EQ(nodes.back()->Read(), std::vector<float>{1});
  EXPECT_EQ(CDriverNode(recorder, 9900, config, 1).Fault(), "Open Fatal Not named Not enough memory.\n");
  nodes.clear();
  EXPECT_EQ(CDriverNode(recorder, 9900, config, 1).Fault(), "");
  config.text1 = CString(std::string(300, 'a'));
  EXPECT_EQ(CDriverNode(recorder, 9900, config, 1).Fault(),
            "Open Fatal Not named Text file: text1 is no file that can be read.\n");
}

}  // namespace
}  // namespace vastra
