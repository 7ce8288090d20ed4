// A visible console that draws each line before the next one comes: our window compared with the text view of
// the toolkit, which draws without colours. Both keep 200 lines, and neither wraps them.
#include <QApplication>
#include <QPlainTextEdit>

#include <cstdlib>

#include "bench/ratios.h"
#include "vastra/console/console_wnd.h"
#include "vastra/ui/text.h"

namespace vastra::bench {
namespace {

constexpr int kLines = 10'000;
constexpr CSize kSize = {800, 600};

// Lines like those of a chain, in its colours.
struct CLine {
  CString text;
  COLORREF colour;
};
std::vector<CLine> Messages() {
  constexpr COLORREF kColours[] = {0x000000, 0x0000B4, 0x0082FF, 0x960000};
  std::vector<CLine> messages(kLines);
  for (int i = 0; i < kLines; ++i) {
    messages[i].text.Format("%*sError - Pump station %d : Could not read component.( CNamerLink,Read)",
                            i % 4 * 3, "", i);
    messages[i].colour = kColours[i % 4];
  }
  return messages;
}

void Console(benchmark::State& state) {
  const std::vector<CLine> messages = Messages();
  CConsoleWnd window;
  window.Create("console", 0, 0, kSize.cx, kSize.cy, nullptr);
  window.ShowWindow(SW_SHOW);
  QApplication::processEvents();
  for (auto _ : state)
    for (const CLine& message : messages) window.Write(message.text, message.colour, 0);
}

void TextView(benchmark::State& state) {
  const std::vector<CLine> messages = Messages();
  QPlainTextEdit view;
  view.setMaximumBlockCount(CConsoleStore::kMaxLines);
  view.setLineWrapMode(QPlainTextEdit::NoWrap);
  view.setReadOnly(true);
  view.resize(kSize.cx, kSize.cy);
  view.show();
  QApplication::processEvents();
  for (auto _ : state) {
    for (const CLine& message : messages) {
      view.appendPlainText(ToScreen(message.text));
      view.viewport()->repaint();
    }
    if (view.blockCount() != CConsoleStore::kMaxLines) state.SkipWithError("lines are missing");
  }
}

BENCHMARK(Console)->Unit(benchmark::kMillisecond);
BENCHMARK(TextView)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  const QApplication application(argc, argv);
  return vastra::bench::RunWithGoals(argc, argv,
                                     {{"console, 10000 lines one by one on the screen: to a text view",
                                       {"Console"},
                                       {"TextView"},
                                       5,
                                       true}});
}
