#include "vastra/screens/output_page.h"

namespace vastra {
namespace {

constexpr const char* kOutputs = "Outputs";
constexpr CControl kOutputPageControls[] = {
    {CControl::listBox, kOutputs, {7, 7, 204, 186}},
    {CControl::button, "Add", {218, 7, 55, 14}},
    {CControl::button, "Edit", {218, 25, 55, 14}},
    {CControl::button, "Delete", {218, 43, 55, 14}},
};
constexpr CDialogTemplate kOutputPageTemplate = {"Output", {280, 200}, kOutputPageControls};

}  // namespace

IMPLEMENT_DYNCREATE(COutputPage, CPropertyPage)

COutputPage::COutputPage() : CItemPage(kOutputPageTemplate, kOutputs) {}

void COutputPage::OnInitDialog() {
  CItemPage::OnInitDialog();
  On("Add", [this] { OnAddoutputButton(); });
  On("Edit", [this] { OnEditoutputButton(); });
  On("Delete", [this] { OnDeloutputButton(); });
  On(
      kOutputs, [this] { OnDblclkOutputList(); }, ENotify::doubleClicked);
}

}  // namespace vastra
