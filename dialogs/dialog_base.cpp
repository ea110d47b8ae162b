#include "dialogs/dialog_base.h"

#include <cstdlib>

int CNyDialog::DoModal() {
    m_pWnd = m_ui.dialogs->CreateDialog(m_kind);
    return m_pWnd->RunModal([this] { OnInitDialog(); });
}

ny::MessageAnswer CNyDialog::Message(const CString& text, ny::MessageButtons buttons, ny::MessageIcon icon) {
    return m_ui.messages->Show(text, buttons, icon);
}

void CNyDialog::AddOkCancel(int okId, int cancelId, std::function<void()> onOk, std::function<void()> onCancel) {
    m_pWnd->AddButton(okId, "确定").onClick = std::move(onOk);
    m_pWnd->AddButton(cancelId, "取消").onClick = std::move(onCancel);
}

namespace ny {

int ReadDecimal(const CString& text) { return static_cast<int>(std::strtol(text.c_str(), nullptr, 10)); }

CString DecimalText(int value) { return std::to_string(value); }

}  // namespace ny
