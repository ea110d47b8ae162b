#include "dialogs/dialog_base.h"

#include <cstdlib>

#include "host/global.h"

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

const char* const MSG_BAD_FILE_NAME = "名称不能为空,也不能含有 \\ / : * ? \" < > |";

bool IsPlainFileName(const CString& name) {
    return !name.empty() && name != "." && name != ".." && name.find_first_of("\\/:*?\"<>|") == CString::npos;
}

MessageRoute::MessageRoute(MessageBoxes& boxes) {
    g_MySetMessageHook([&boxes](const CString& text, const CString& caption, unsigned) {
        boxes.Show(text, MessageButtons::Ok, MessageIcon::None, caption);
        return 1;
    });
}

MessageRoute::~MessageRoute() { g_MySetMessageHook(nullptr); }

}  // namespace ny
