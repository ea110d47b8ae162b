#pragma once
// A temporary installation with a small library and the catalog, and the headless services
// that the dialogs run with.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "catalog/function_manager.h"
#include "host/global.h"
#include "model/library.h"
#include "platform/headless_dialogs.h"
#include "tests/host/temp_installation.h"

class DialogsTest : public ::testing::Test {
protected:
    void SetUp() override {
        g_MyExePath = m_dir.Path();
        g_MyRemoveIndicators();
        if (g_MyFunsMng.GetCount() == 0) g_MyFunsMng.LoadFun();
    }
    void TearDown() override { g_MyRemoveIndicators(); }

    // Puts a formula into the library and returns it.
    static CIndicator* AddFormula(const char* name, short mainType, short subType, char sysIndex,
                                  const char* source = "A:C;", const char* title = "") {
        auto* f = new CIndicator;
        f->m_strName = name;
        f->m_strTitle = title;
        f->m_MainType = mainType;
        f->m_SubType = subType;
        f->m_SysIndex = sysIndex;
        f->m_strSource = source;
        auto* e = new CExpression;
        e->m_strName = "A";
        e->m_strText = "C";
        e->m_nType = 1;
        f->m_arExpressions.push_back(e);
        g_MyAddIndicator(f);
        return f;
    }

    TempInstallation m_dir;
    ny::HeadlessDialogServices m_headless;
    ny::DialogServices m_ui = m_headless.Services();
};
