#pragma once
// The formula manager: all editable formulas of the library as a tree on four tabs (by group,
// all, system, user), with new, change, delete, export and import. It holds no data of its own;
// the tree is rebuilt from the library on each change of tab and after each action, and its
// items point at the library's formulas. Refusals are message boxes; the dialog stays open and
// the library as it was. Nothing is written to the library's files here: that is the host's
// g_MySaveIndicator. Runs on the user-interface thread.

#include "dialogs/dialog_base.h"
#include "model/indicator.h"
#include "platform/tree_control.h"

class CFormulaManagerDialog : public CNyDialog {
public:
    enum : int { IDC_TAB = 100, IDC_TREE, IDC_NEW, IDC_UPDATE, IDC_DELETE, IDC_EXPORT, IDC_IMPORT, IDC_CLOSE };
    enum Tab : int { kTabGroups = 0, kTabAll = 1, kTabSystem = 2, kTabUser = 3 };

    explicit CFormulaManagerDialog(ny::DialogServices& ui) : CNyDialog(ui, "CFormulaManagerDialog") {}

    void OnNew();
    void OnUpdate();
    void OnDelete();
    void OnExportFormula();
    void OnImportFormula();
    void OnSelchangeTab();
    void OnDblclkIndicatorTree();
    void OnSelchangedIndicatorTree();

    void FullFormulaCurTab(short mainType, short subType);
    void FullFormulaGroupTree();
    void FullFormulaAllTree();
    void FullFormulaSystemTree();
    void FullFormulaUserTree();

protected:
    void OnInitDialog() override;

private:
    // Which formulas a tree shows, and whether kinds 0 and 1 stand under their groups.
    enum class Shown { All, System, User };
    void FillTree(Shown shown, bool grouped);
    CIndicator* SelectedFormula() const;
    // Asks for the formula's password when it has one; true when the action may go on.
    bool PasswordAccepted(const CIndicator& formula);

    ny::TabControl* m_pTab = nullptr;
    ny::TreeControl* m_pTree = nullptr;
    ny::PushButton* m_pUpdate = nullptr;
    ny::PushButton* m_pDelete = nullptr;
};
