// Windows for tests: a user who clicks and types into real widgets found by what they show, boxes and
// choosers that answer by themselves and remember what they were asked.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QListWidget>
#include <QTest>
#include <QTimer>

#include <functional>
#include <string>
#include <vector>

#include "vastra/platform/chooser.h"
#include "vastra/platform/prompt.h"
#include "vastra/ui/drawing.h"
#include "vastra/ui/text.h"
#include "vastra/ui/window.h"

namespace vastra {

// Answers each box with answer and keeps "title|text|type in hexadecimal".
class CTestPrompter : public CPrompter {
 public:
  CTestPrompter() : m_former(SetPrompter(this)) {}
  ~CTestPrompter() override { SetPrompter(m_former); }
  int Show(const CString& text, const CString& title, UINT type) override {
    CString line;
    line.Format("%s|%s|%02x", title.Std().c_str(), text.Std().c_str(), type);
    asked.push_back(line.Std());
    return answer;
  }
  // What was asked since the last call.
  std::vector<std::string> Take() { return std::exchange(asked, {}); }

  int answer = IDOK;
  std::vector<std::string> asked;

 private:
  CPrompter* m_former;
};

// Gives path and colour, and paths where several are asked for; without a path a chooser is cancelled.
class CTestChooser : public CChooser {
 public:
  CTestChooser() : m_former(SetChooser(this)) {}
  ~CTestChooser() override { SetChooser(m_former); }
  int ChooseFile(const CFileQuestion& question, CString& chosen) override {
    file = question;
    chosen = path;
    return !path.IsEmpty();
  }
  int ChooseFiles(const CFileQuestion& question, CStringArray& chosen) override {
    file = question;
    chosen = paths;
    return !paths.IsEmpty();
  }
  int ChooseFolder(CString& chosen) override {
    folder = chosen;
    if (!path.IsEmpty()) chosen = path;
    return !path.IsEmpty();
  }
  int ChooseColour(COLORREF& chosen) override { return accepts ? (chosen = colour, 1) : 0; }

  CFileQuestion file;  // the last question
  CString folder;      // where the last one began
  CString path;
  CStringArray paths;
  bool accepts = true;
  COLORREF colour = 0;

 private:
  CChooser* m_former;
};

// The one widget of class T in window that is called name: shows it, or has it for its accessible name.
// Windows that belong to window, also those that are on their way out, are windows of their own.
template <class T>
T* Find(QWidget* window, const char* name) {
  const auto shows = [](QWidget* widget) {
    QString text = widget->accessibleName();
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) text = button->text();
    return text.replace("&&", "&");
  };
  T* found = nullptr;
  for (T* widget : window->findChildren<T*>())
    if (widget->window() == window->window() && shows(widget) == name) found = widget;
  if (!found) throw std::runtime_error(std::string("no widget called ") + name);
  return found;
}

inline void Click(QWidget* window, const char* caption) {
  auto* button = Find<QAbstractButton>(window, caption);
  const QPoint mark = {8, button->height() / 2};  // a box may be wider than what can be clicked
  QTest::mouseClick(button, Qt::LeftButton, {}, button->isCheckable() ? mark : QPoint());
}

// What a list shows, top to bottom.
inline std::vector<std::string> Shown(const QListWidget* list) {
  std::vector<std::string> texts;
  for (int i = 0; i < list->count(); ++i) texts.push_back(list->item(i)->text().toStdString());
  return texts;
}

// Runs user as soon as a modal window stands that was not there before, with that window, while run waits for
// it. What is still open when user is done is closed, so that no test hangs.
inline void WhileModal(const std::function<void()>& run, const std::function<void(QWidget*)>& user) {
  QWidget* before = QApplication::activeModalWidget();
  bool came = false;
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    QWidget* window = QApplication::activeModalWidget();
    if (!window || window == before) return;
    watch.stop();
    came = true;
    user(window);
    if (QApplication::activeModalWidget() == window) window->close();
  });
  watch.start(0);
  run();
  EXPECT_TRUE(came) << "no modal window came up";
}

// Paints window and gives what it shows.
inline QImage Grab(CWnd& window) { return window.Widget()->grab().toImage(); }

// The colour at a point as 0x00BBGGRR.
inline COLORREF PixelOf(const QImage& image, int x, int y) {
  const QRgb pixel = image.pixel(x, y);
  return RGB(qRed(pixel), qGreen(pixel), qBlue(pixel));
}

}  // namespace vastra
