#include "vastra/screens/summary_page.h"

namespace vastra {
namespace {

constexpr const char* kSummaries = "Summaries";
constexpr CControl kSummaryPageControls[] = {
    {CControl::listBox, kSummaries, {7, 7, 204, 186}},
    {CControl::button, "Add", {218, 7, 55, 14}},
    {CControl::button, "Edit", {218, 25, 55, 14}},
    {CControl::button, "Delete", {218, 43, 55, 14}},
};
constexpr CDialogTemplate kSummaryPageTemplate = {"Summary", {280, 200}, kSummaryPageControls};

}  // namespace

IMPLEMENT_DYNCREATE(CSummaryPage, CPropertyPage)

CSummaryPage::CSummaryPage() : CItemPage(kSummaryPageTemplate, kSummaries) {}

void CSummaryPage::OnInitDialog() {
  CItemPage::OnInitDialog();
  On("Add", [this] { OnAddsummaryButton(); });
  On("Edit", [this] { OnEditsummaryButton(); });
  On("Delete", [this] { OnDelsummaryButton(); });
  On(
      kSummaries, [this] { OnDblclkSummaryList(); }, ENotify::doubleClicked);
}

}  // namespace vastra
