#include "dialogs/formula_tree.h"

namespace ny {

int FormulaImageOf(const CIndicator& formula) {
    if (!formula.m_strPassword.empty()) return kImagePasswordFormula;
    return formula.m_SysIndex != 0 ? kImageSystemFormula : kImageUserFormula;
}

CString FormulaItemText(const CIndicator& formula, bool markSystem) {
    const CString text = formula.m_strName + " " + formula.m_strTitle;
    if (formula.m_SysIndex == 0) return text + "(用户)";
    return markSystem ? text + "(系统)" : text;
}

std::map<short, TreeItem> AddGroupNodes(TreeControl& tree, TreeItem root, const std::vector<FormulaLabel>& groups) {
    std::map<short, TreeItem> nodes;
    for (const FormulaLabel& group : groups) nodes[group.value] = tree.InsertItem(group.label, kImageGroup, root);
    return nodes;
}

CIndicator* FormulaOf(const TreeControl& tree, TreeItem item) {
    return item == kNoItem ? nullptr : static_cast<CIndicator*>(tree.GetItemData(item));
}

const std::vector<FormulaLabel>& GroupsOfKind(short mainType) {
    static const std::vector<FormulaLabel> none;
    if (mainType == 0) return kIndicatorGroups;
    if (mainType == 1) return kConditionGroups;
    return none;
}

}  // namespace ny
