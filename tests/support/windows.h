// For tests of windows: finds real widgets by their texts, clicks and types, and answers boxes and choosers.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QPaintEvent>
#include <QTest>
#include <QTimer>

#include <functional>
#include <map>

#include "vastra/platform/chooser.h"
#include "vastra/platform/prompt.h"
#include "vastra/ui/drawing.h"

namespace vastra {

// Captions of buttons and labels that share a key of Alt, such as "Chart/Copy"; empty: each has its own.
inline std::string RepeatedKeys(const QWidget& window) {
  std::map<QKeySequence, QString> captions;
  const auto repeated = [&](const QWidget* widget, const QString& text) {
    const QKeySequence key = QKeySequence::mnemonic(text);
    if (key.isEmpty() || !widget->isVisibleTo(&window)) return std::string();
    const auto [former, isNew] = captions.emplace(key, text);
    return isNew ? std::string() : (former->second + '/' + text + ' ').toStdString();
  };
  std::string all;
  for (const auto* button : window.findChildren<QAbstractButton*>()) all += repeated(button, button->text());
  for (const auto* label : window.findChildren<QLabel*>())
    if (label->buddy()) all += repeated(label, label->text());
  return all;
}

// Answers each box with answer, after a call of user, and keeps "title|text|type in hexadecimal".
class CTestPrompter : public CPrompter {
 public:
  CTestPrompter() { SetPrompter(this); }
  ~CTestPrompter() override { SetPrompter(nullptr); }
  int Show(const CString& text, const CString& title, UINT type) override {
    if (user) user();
    asked.push_back(title.Std() + "|" + text.Std() + QString::asprintf("|%02x", type).toStdString());
    return answer;
  }
  // The boxes since the last call.
  std::vector<std::string> Take() { return std::exchange(asked, {}); }

  int answer = IDOK;
  std::function<void()> user;
  std::vector<std::string> asked;
};

// Returns path, paths or colour. The user cancels if that is empty or 0.
class CTestChooser : public CChooser {
 public:
  CTestChooser() { SetChooser(this); }
  ~CTestChooser() override { SetChooser(nullptr); }
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
    folder = std::exchange(chosen, path);
    return !path.IsEmpty();
  }
  int ChooseColour(COLORREF& chosen) override { return (chosen = colour) != 0; }
  void StartIn(const CString& begin) override { start = begin; }

  CFileQuestion file;  // the last question
  CString folder;      // where the last search for a folder began
  CString start;       // where a search for files begins
  CString path;
  CStringArray paths;
  COLORREF colour = 0;
};

// The widget of class T in window whose text or accessible name is name; that of a visible page is preferred.
// Dialogs that belong to window are not searched, since one that is closed may not be deleted yet.
template <class T>
T* Find(QWidget* window, const char* name) {
  T* found = nullptr;
  for (T* widget : window->findChildren<T*>()) {
    const auto* button = qobject_cast<QAbstractButton*>(widget);
    const QString text = button ? button->text().replace("&&", "&") : widget->accessibleName();
    if (text == name && widget->window() == window->window() &&
        (!found || widget->isVisible() || !found->isVisible()))
      found = widget;
  }
  if (!found) throw std::runtime_error(std::string("no widget called ") + name);
  return found;
}

inline void Click(QWidget* window, const char* caption) {
  auto* button = Find<QAbstractButton>(window, caption);
  const QPoint mark = {8, button->height() / 2};  // of a check box, only the mark and its text can be clicked
  QTest::mouseClick(button, Qt::LeftButton, {}, button->isCheckable() ? mark : QPoint());
}

// The texts of a list, from top to bottom.
inline std::vector<std::string> Shown(const QListWidget* list) {
  std::vector<std::string> texts;
  for (int i = 0; i < list->count(); ++i) texts.push_back(list->item(i)->text().toStdString());
  return texts;
}

// Calls run, which opens a modal window, and user with that window. Closes the window if user leaves it open,
// so that no test hangs.
inline void WhileModal(const std::function<void()>& run, const std::function<void(QWidget*)>& user) {
  QWidget* before = QApplication::activeModalWidget();
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    QWidget* window = QApplication::activeModalWidget();
    if (!window || window == before) return;
    watch.stop();
    user(window);
    if (QApplication::activeModalWidget() == window) window->close();
  });
  watch.start(0);
  run();
  EXPECT_FALSE(watch.isActive()) << "no modal window came up";
}

// Counts how often a widget paints any of part; by default, anything.
class CPaints : public QObject {
 public:
  explicit CPaints(QWidget* widget, QRect part = QRect(0, 0, 9999, 9999)) : m_part(part) {
    widget->installEventFilter(this);
  }
  bool eventFilter(QObject*, QEvent* event) override {
    m_count +=
        event->type() == QEvent::Paint && static_cast<QPaintEvent*>(event)->region().intersects(m_part);
    return false;
  }
  int Take() { return std::exchange(m_count, 0); }

 private:
  const QRect m_part;
  int m_count = 0;
};

// The colour at a point as 0x00BBGGRR.
inline COLORREF PixelOf(const QImage& image, int x, int y) {
  const QRgb pixel = image.pixel(x, y);
  return RGB(qRed(pixel), qGreen(pixel), qBlue(pixel));
}

}  // namespace vastra
