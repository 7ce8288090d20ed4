#include "tests/logfiles/example.h"
#include "tests/logfiles/link_fixture.h"

namespace vastra {
namespace {

// The reader's fault, or the bytes of a log with the same names and samples.
std::string Read(const std::string& bytes) {
  CSampleStore samples;
  CLogReader log(samples);
  CMemFile file(bytes);
  const bool isRead = log.Open(file) && log.ReadSamples();
  if (samples.IsEmpty()) return isRead ? "no samples" : log.GetFault().Std();
  CStringArray names;
  log.GetNames(names);
  EXPECT_TRUE(isRead && log.HasNames(names));
  return Written(names, samples);
}

// The example log with `with` in place of `size` bytes from `offset` on.
std::string Patched(std::size_t offset, std::size_t size, const std::string& with) {
  return ExampleLog().replace(offset, size, with);
}

TEST(LogReader, AcceptsOddLogsAndReportsWhatIsWrongAndWhere) {
  const std::string log = ExampleLog();
  const auto shortCount = [](std::uint16_t count) { return Raw(count); };
  const auto longCount = [](std::uint32_t count) { return "\xFF\xFF" + Raw(count); };
  const std::pair<std::string, std::string> kCases[] = {
      {log, log},
      {log + "after the trailer", log},
      {Patched(4, 4, Raw(1)), log},
      {Patched(12, 8, "abcdefgh"), log},
      {Patched(20, 1, "\5words"), log},
      {Patched(57, 2, longCount(2)), log},
      {ExampleLog().insert(83, 12, 't').replace(57, 2, shortCount(3)), log},
      {Patched(37, 10, shortCount(0)), Patched(37, 10, shortCount(0))},
      {Patched(33, 50, std::string(6, 0)), "no samples"},
      {"TimeStamp,Temp,\n", "is not a log: its first bytes are those of another format"},
      {log.substr(0, 3), "ends at byte 3 inside the start (from byte 0 on)"},
      {log.substr(0, 50), "ends at byte 50 inside the values of sample 2 (from byte 47 on)"},
      {Patched(57, 2, shortCount(1)), "has only 1 times for its 2 samples (byte 57)"},
      {Patched(21, 2, longCount(~0u)), "ends at byte 91 inside name 7 (from byte 45 on)"},
      {Patched(23, 1, "\xFF" + longCount(~0u)), "ends at byte 93 inside name 1 (from byte 23 on)"},
      {Patched(33, 4, Raw(~0u)), "ends at byte 87 inside the values of sample 6 (from byte 71 on)"},
      {Patched(37, 2, longCount(~0u)), "ends at byte 91 inside the values of sample 1 (from byte 37 on)"},
      {Patched(57, 2, longCount(~0u)), "ends at byte 91 inside the times (from byte 63 on)"},
      {Patched(20, 1, "\xFF" + Raw(~0u)), "ends at byte 91 inside the reserved text (from byte 20 on)"},
  };
  for (const auto& [bytes, text] : kCases) EXPECT_EQ(Read(bytes), text);
  for (std::size_t size = 0; size < log.size(); ++size)
    EXPECT_TRUE(Read(log.substr(0, size)).starts_with("ends at byte " + std::to_string(size) + " "));
}

TEST(LogWriter, WritesLogsThatReadBackTheSame) {
  constexpr struct {
    int samples, values;
    std::size_t nameSize, fileSize;
  } kShapes[] = {
      {1, 0, 0, 21 + 2 + 1 + 4 + 2 + 2 + 12 + 4},
      {3, 2, 255, 21 + 2 + 258 + 4 + 3 * 10 + 2 + 3 * 12 + 4},
      {1, 1, 0xFFFD, 21 + 2 + 3 + 0xFFFD + 4 + 6 + 2 + 12 + 4},
      {1, 1, 0xFFFE, 21 + 2 + 7 + 0xFFFE + 4 + 6 + 2 + 12 + 4},
      {65534, 0, 1, 21 + 2 + 2 + 4 + 65534 * 2 + 2 + 65534 * 12 + 4},
      {65535, 0, 1, 21 + 2 + 2 + 4 + 65535 * 2 + 6 + 65535 * 12 + 4},
      {2, 70000, 1, 21 + 2 + 2 + 4 + 2 * (6 + 70000 * 4) + 2 + 24 + 4},
  };
  for (const auto& shape : kShapes) {
    CSampleStore samples;
    for (int i = 0; i < shape.samples; ++i) {
      CLogSample sample;
      sample.m_time = {i, static_cast<std::uint16_t>(i), -60, 1, 0xABCD};
      for (int v = 0; v < shape.values; ++v) sample.m_values.Add(static_cast<float>(i + v));
      samples.Append(sample);
    }
    CStringArray names;
    names.Add(CString(std::string(shape.nameSize, '\xE9')));
    const std::string bytes = Written(names, samples);
    EXPECT_EQ(bytes.size(), shape.fileSize);
    EXPECT_TRUE(Read(bytes) == bytes);
  }
}

}  // namespace
}  // namespace vastra
