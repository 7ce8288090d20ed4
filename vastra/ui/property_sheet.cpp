#include "vastra/ui/property_sheet.h"

#include <QSignalBlocker>
#include <QTabWidget>

#include <algorithm>

#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr const char* kTabs = "Pages";
constexpr int kSheetMargin = 7, kTabHeight = 20,
              kEdges = 6;  // dialog units: around all, of the tabs, of a page
constexpr CSize kButton = {50, 14};

}  // namespace

IMPLEMENT_DYNAMIC(CPropertyPage, CDialog)
IMPLEMENT_DYNAMIC(CPropertySheet, CDialog)

CPropertySheet::CPropertySheet(const char* title, CWnd* parent)
    : CDialog(m_own, parent), m_own{title, {}, {}} {}

// The sheet has the size of its largest page.
int CPropertySheet::DoModal() {
  CSize page;
  for (const CPropertyPage* each : m_pages)
    page = {std::max(page.cx, each->Model().size.cx), std::max(page.cy, each->Model().size.cy)};
  const CSize tabs = {page.cx + kEdges, page.cy + kTabHeight};
  const int top = kSheetMargin + tabs.cy + kSheetMargin;
  const auto left = [&](int fromRight) {
    return kSheetMargin + tabs.cx - fromRight * kButton.cx - (fromRight - 1) * kSheetMargin;
  };
  m_controls = {{CControl::tabs, kTabs, {kSheetMargin, kSheetMargin, tabs.cx, tabs.cy}},
                {CControl::defaultButton, "OK", {left(3), top, kButton.cx, kButton.cy}},
                {CControl::button, "Cancel", {left(2), top, kButton.cx, kButton.cy}},
                {CControl::button, "Apply", {left(1), top, kButton.cx, kButton.cy}}};
  m_own.size = {tabs.cx + 2 * kSheetMargin, top + kButton.cy + kSheetMargin};
  m_own.controls = m_controls;
  m_active = 0;
  const int result = CDialog::DoModal();
  for (CPropertyPage* each : m_pages) each->Release();
  m_tabs = nullptr;
  return result;
}

void CPropertySheet::OnInitDialog() {
  m_tabs = static_cast<QTabWidget*>(Place(kTabs).Widget());
  for (CPropertyPage* page : m_pages) {
    auto* widget = new QWidget;
    page->Fill(widget);
    m_tabs->addTab(widget, ToScreen(page->Model().title).replace('&', "&&"));
    page->OnInitDialog();
  }
  PutButtonsLast();
  QObject::connect(m_tabs, &QTabWidget::currentChanged, m_tabs, [this](int index) {
    Show(m_active);  // the active page stays visible until it agrees
    SetActivePage(index);
  });
  On("Apply", [this] { Apply(); });
}

// Sets the tab order: tabs, controls of the page, buttons.
void CPropertySheet::PutButtonsLast() {
  QWidget* last = Widget()->previousInFocusChain();
  for (const char* caption : {"OK", "Cancel", "Apply"}) {
    QWidget* button = Button(caption).Widget();
    QWidget::setTabOrder(last, button);
    last = button;
  }
}

void CPropertySheet::SetActivePage(int index) {
  if (index == m_active || !m_pages[static_cast<std::size_t>(m_active)]->OnKillActive()) return;
  m_active = index;
  Show(index);
}

void CPropertySheet::Show(int index) {
  const QSignalBlocker quiet(m_tabs);
  m_tabs->setCurrentIndex(index);
}

// 1: all pages have accepted. A page that refuses is activated.
int CPropertySheet::Apply() {
  if (!m_pages[static_cast<std::size_t>(m_active)]->OnKillActive()) return 0;
  for (std::size_t i = 0; i < m_pages.size(); ++i) {
    if (m_pages[i]->OnApply()) continue;
    m_active = static_cast<int>(i);
    Show(m_active);
    return 0;
  }
  OnApplied();
  return 1;
}

void CPropertySheet::OnOK() {
  if (Apply()) CDialog::OnOK();
}

}  // namespace vastra
