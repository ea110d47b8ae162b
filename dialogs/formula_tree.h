#pragma once
// The pieces that every tree of formulas shares: the images of its items, the text of a
// formula item, group nodes from a table of labels, and the formula behind an item. Items
// point at the library's formulas and never own them.

#include <map>
#include <vector>

#include "model/indicator.h"
#include "model/library.h"
#include "platform/tree_control.h"

namespace ny {

enum FormulaImage : int {
    kImageRoot = 0,
    kImageGroup = 1,
    kImageSystemFormula = 2,
    kImageUserFormula = 3,
    kImagePasswordFormula = 4,
};

// The image of a formula item: a password first, then system or user.
int FormulaImageOf(const CIndicator& formula);
// "%s %s(用户)" for a user formula; for a system one "%s %s(系统)", or "%s %s" without the mark.
CString FormulaItemText(const CIndicator& formula, bool markSystem = true);
// Appends one group node per label under `root`; the nodes by group number.
std::map<short, TreeItem> AddGroupNodes(TreeControl& tree, TreeItem root, const std::vector<FormulaLabel>& groups);
// The formula of an item, or null for a root, a group node or no item.
CIndicator* FormulaOf(const TreeControl& tree, TreeItem item);
// The groups of a kind: indicators and conditions have groups, the other kinds none (empty).
const std::vector<FormulaLabel>& GroupsOfKind(short mainType);

}  // namespace ny
