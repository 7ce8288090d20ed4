// The main program of tests with windows.
#include <gtest/gtest.h>

#include <QApplication>

#include <clocale>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  setenv("QT_QPA_PLATFORM", "offscreen", 0);  // needed even to list the tests
  const QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");  // as CWindows does
  QApplication::setQuitOnLastWindowClosed(false);
  const int result = RUN_ALL_TESTS();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  return result;
}
